// Reads a database from its source when it is needed: the header first, then the structure of all tables,
// then one table's rows after the other.
#pragma once

#include <optional>
#include <unordered_map>

#include "Quillet/base/CString.h"
#include "Quillet/document/DocumentReader.h"
#include "Quillet/document/Omissions.h"
#include "Quillet/platform/File.h"
#include "Quillet/registry/LastError.h"

class DbDatabase;
class DbSource;
class DbTableData;
class DbTableDescr;

namespace quillet {

class AccessImporter;
class Log;
class Registry;

// If a member that reads throws, the database is unchanged, and the next access reads the same again.
class LazyReader {
public:
    LazyReader(DbDatabase& owner, DbSource& source, Registry& registry, AccessImporter& importer, Log& log)
        : m_owner(owner), m_source(source), m_registry(registry), m_importer(importer), m_log(log) {}

    // Everything is still to be read, or nothing is.
    void Reset();
    void MarkRead();
    // Whether reading has begun; the way of reading can't be changed then.
    bool HasBegun() const { return !m_pending; }

    // Reads the header and the structure of the body of a sequential source, or the whole of another one,
    // also of an Access file; adds the header and properties tables where the file has none. What was read
    // counts as unchanged. Once only.
    void ReadStructure();
    // Cuts the next table's rows out of a sequential source and gives them to the table that they name. Null,
    // with the source released, when no table is unread, or, with a line in the log, when the file has no
    // more.
    DbTableData* ReadNextTable();
    // Reads tables in the order of the file until the given one has its rows. A line in the log says that it
    // was not reached.
    void ReadUntil(const DbTableData* data);
    void ReadAll();
    // Reads the rows in the text of a <table> element that the table kept. Throws as
    // DbDatabase::ParseXmlTableData.
    void ParseRows(const DbTableData& data, const CString& xml);
    // Reads tables until the given one has its rows, or the file has no more of them.
    void Reach(const DbTableData* data);
    // A program deletes the contents of a table that was reached: its rows are no longer expected.
    void Forget(const DbTableData* data);
    // A program deletes the fields of a table, or all of it.
    void ForgetStructure(const DbTableDescr* descr);

    // Called before the file at a path is replaced. If it is the one that was read, every table that still
    // lacks its rows gets them. Returns what would still be lost, in one line; empty for nothing.
    CString ReadRest(const CString& path);
    // Whether the path leads to the file of the source, the one that was read or the one that is there now.
    bool IsOwnFile(const CString& path) const;
    // The file of the source now holds exactly the model: nothing of it is missing.
    void MarkWritten() noexcept;

    // Why the last reading did not bring everything; the text is empty after one that did.
    DbLogEntry LastReadFault() const;
    CString LastReadError() const { return LastReadFault().m_text; }
    // Whether that was for want of memory.
    bool IsOutOfMemory() const { return m_error.IsOutOfMemory(); }

private:
    void Read();
    void ReadSequentially();
    DbTableData* CutNextTable();
    void CheckEnd();
    void LogEnd();
    bool IsSourceFile(const CString& path) const;
    DbLogEntry FindMissing(const CString& path);
    bool IsWhatWasScanned(const CString& path) const;
    CString Unreached() const;
    void TakeBackUnparsed();
    Unread::iterator FindUnread(const DbTableData* data);
    bool IsUnread(const DbTableData* data);
    Unread::iterator UnreadOf(const CString& xml);

    DbDatabase& m_owner;
    DbSource& m_source;
    Registry& m_registry;
    AccessImporter& m_importer;
    Log& m_log;
    bool m_pending = true;
    // Of a sequential source: the tables whose rows are still in the file, in the order of the structure,
    // those whose text was handed out, and how many <table> elements of the body's rows were cut out.
    Unread m_unread;
    std::unordered_map<const DbTableData*, UnreadTable> m_handedOut;
    std::size_t m_cut = 0;
    // How many of those the source has passed since it was last opened.
    std::size_t m_passed = 0;
    // Of a sequential source, while the file as a whole was not looked at.
    std::optional<ScannedPlaces> m_scanned;
    bool m_endIsLogged = false;
    std::optional<platform::FileIdentity> m_identity;
    Omissions m_omissions;
    LastError m_error{DbLogEntry::Kind::ReadFault};
};

}  // namespace quillet
