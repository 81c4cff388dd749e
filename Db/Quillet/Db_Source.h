// The file of a database.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

class DbDatabase;

namespace quillet {
class LazyReader;
class XmlScanner;
namespace platform {
class ReadableFile;
struct FileStamp;
}  // namespace platform
}  // namespace quillet

// Decides from the last three characters of the file's name what the file is, checks that it can be read, and
// in sequential access cuts the text of one element after another out of an XML file, reading strictly
// forward.
class QUILLET_API DbSource {
public:
    // While set, a name that ends in "mdb" is turned into the same name ending in "xml".
    static bool ForceXML;
    // The size in bytes of the read buffer and of each read.
    static std::int32_t MaxBufferSize;

    // A source without a file; not valid.
    explicit DbSource(DbDatabase* owner);
    // As SetFile(path, false).
    DbSource(DbDatabase* owner, const quillet::CString& path);
    DbSource(const DbSource&) = delete;
    DbSource& operator=(const DbSource&) = delete;
    virtual ~DbSource();

    // Points at another file and clears the owner. A name that ends in neither "xml" nor "mdb" gives an
    // invalid source, without an error. Throws DbException "Invalid source file '%s'", by pointer, for a path
    // that can't be read, and the source is not valid then; a file that can't be written is read-only. A
    // source that was read to its end reads no other file sequentially.
    void SetFile(const quillet::CString& path, bool readOnly);
    // Points at a file that need not exist yet and clears the owner. With ForceXML the last three characters
    // of the path become "xml".
    void Create(const quillet::CString& path);

    bool IsValid() const { return m_valid; }
    bool IsReadOnly() const { return m_readOnly; }
    bool IsXmlBased() const { return m_type == Type::Xml; }
    bool IsMdbBased() const { return m_type == Type::Mdb; }
    bool IsSequentialAccess() const { return m_sequential; }
    // Ignored unless the source is XML. Call this before anything else of the database: later the flag is
    // still set, and a line in the database's log says that it came too late.
    void SetSequentialAccess(bool on);
    // Whether sequential reading has come to its end.
    bool IsEof() const { return m_eof; }

    // The path, in the form that decided the type.
    const quillet::CString& GetFile() const { return m_path; }
    // The part after the last backslash and before the last full stop; empty if no full stop follows.
    quillet::CString GetBareName() const;

    // Ends sequential reading: closes the file and frees the buffer.
    void Release();

    // Gives in text the next element, at or after the current position, whose path
    // ("\database\body\structure") equals path: from its '<' to its last '>'. Text that is no UTF-8 comes
    // back empty. False when there is none, which also ends sequential reading, and when the source is no
    // XML.
    bool ExtractXmlNode(const quillet::CString& path, quillet::CString& text);

private:
    friend class quillet::LazyReader;

    enum class Type : std::uint32_t { None = 0, Xml = 1, Mdb = 2 };

    void CloseFile();
    void ClearOwner();
    bool CheckSource();
    void OpenForScanning();
    // Sequential reading starts again at the beginning of the file, or is over.
    void Rewind(bool isEof);
    // Why sequential reading ended before the end of the file; empty where it did not.
    const quillet::CString& ReadFailure() const { return m_readFailure; }
    // What the file was when sequential reading began; null where the system can't tell.
    const quillet::platform::FileStamp* ScannedStamp() const { return m_stamp.get(); }
    // Whether that was the file's fault, and not that of its contents.
    bool IsFileBad() const { return m_isFileBad; }
    bool Fail(const quillet::CString& why);
    // Where the element that was extracted last begins in the file.
    std::uint64_t Place() const { return m_place; }

    // Points to the owner as long as it lives.
    std::weak_ptr<DbDatabase*> m_owner;
    Type m_type = Type::None;
    quillet::CString m_path;
    std::unique_ptr<quillet::platform::ReadableFile> m_file;
    std::unique_ptr<quillet::XmlScanner> m_scanner;
    // The file that sequential reading began with, as it was then, and why reading failed.
    std::unique_ptr<quillet::platform::FileStamp> m_stamp;
    quillet::CString m_readFailure;
    std::uint64_t m_place = 0;
    bool m_isFileBad = false;
    bool m_opened = false;
    std::int32_t m_blockSize;
    bool m_eof = false;
    bool m_readOnly = false;
    bool m_sequential = false;
    bool m_valid = false;
};
