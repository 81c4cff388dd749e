#include "Quillet/Db_Source.h"

#include <algorithm>
#include <utility>

#include "Quillet/Db_Exception.h"
#include "Quillet/document/XmlScanner.h"
#include "Quillet/platform/File.h"
#include "Quillet/registry/Upcalls.h"

using quillet::CString;

namespace {

constexpr int EndingLength = 3;

bool EndsWith(const CString& path, const char* ending) {
    return path.Right(EndingLength).CompareNoCase(ending) == 0;
}

// Paths too short to have an ending stay as they are.
void OverwriteEnding(CString& path) {
    if (path.GetLength() >= EndingLength) {
        path = path.Left(path.GetLength() - EndingLength) + "xml";
    }
}

}  // namespace

bool DbSource::ForceXML = true;
std::int32_t DbSource::MaxBufferSize = 16384;

DbSource::DbSource(DbDatabase* owner) : m_blockSize(MaxBufferSize) {
    if (owner != nullptr) {
        m_owner = quillet::Upcalls::LifeTokenOf(*owner);
    }
}

DbSource::DbSource(DbDatabase* owner, const CString& path) : DbSource(owner) {
    SetFile(path, false);
}

DbSource::~DbSource() {
    Release();
}

void DbSource::SetFile(const CString& path, bool readOnly) {
    CloseFile();
    m_readOnly = readOnly;
    m_path = path;
    if (EndsWith(path, "xml")) {
        m_type = Type::Xml;
        m_sequential = false;
    } else if (EndsWith(path, "mdb")) {
        m_type = Type::Mdb;
        m_sequential = false;
        if (ForceXML) {
            OverwriteEnding(m_path);
            m_type = Type::Xml;
        }
    }
    ClearOwner();
    m_valid = false;
    m_valid = CheckSource();
}

void DbSource::Create(const CString& path) {
    CloseFile();
    m_path = path;
    if (ForceXML) {
        OverwriteEnding(m_path);
        m_type = Type::Xml;
        m_sequential = false;
    }
    if (EndsWith(m_path, "xml")) {
        m_type = Type::Xml;
        m_sequential = false;
    }
    ClearOwner();
    m_valid = true;
}

void DbSource::CloseFile() {
    m_scanner.reset();
    m_file.reset();
    m_opened = false;
    m_stamp.reset();
    m_readFailure.Empty();
    m_isFileBad = false;
    m_blockSize = MaxBufferSize;
}

void DbSource::ClearOwner() {
    if (const std::shared_ptr<DbDatabase*> owner = m_owner.lock()) {
        quillet::Upcalls::Clear(**owner);
    }
}

bool DbSource::CheckSource() {
    if (!m_path.IsEmpty()) {
        const std::string path = m_path.ToUtf8();
        if (!quillet::platform::ReadableFile::Open(path)) {
            // The line is part of the message that hosts know.
            constexpr int ReportedLine = 222;
            CString message;
            message.Format("Invalid source file '%s'", path.c_str());
            throw new DbException("Db/Quillet/Db_Source", ReportedLine, message);
        }
        if (!quillet::platform::CanWriteFile(path)) {
            m_readOnly = true;
        }
    }
    return m_type != Type::None;
}

void DbSource::SetSequentialAccess(bool on) {
    if (!IsXmlBased()) {
        return;
    }
    const bool wasOn = std::exchange(m_sequential, on);
    const std::shared_ptr<DbDatabase*> owner = m_owner.lock();
    if (wasOn != on && owner && quillet::Upcalls::HasBegunToRead(quillet::Upcalls::AsItem(*owner))) {
        CString line;
        line.Format("Sequential access was switched %s after the first access to '%s': too late, no effect",
                    on ? "on" : "off", m_path.ToUtf8().c_str());
        quillet::Upcalls::Log(quillet::Upcalls::AsItem(*owner), {DbLogEntry::Kind::Refused, line});
    }
}

CString DbSource::GetBareName() const {
    const int start = m_path.ReverseFind('\\') + 1;
    return m_path.Mid(start, m_path.ReverseFind('.') - start);
}

void DbSource::Release() {
    m_scanner.reset();
    m_file.reset();
    m_opened = false;
    m_eof = true;
}

void DbSource::Rewind(bool isEof) {
    m_scanner.reset();
    m_file.reset();
    m_opened = false;
    m_eof = isEof;
}

// Always false.
bool DbSource::Fail(const CString& why) {
    m_readFailure = why;
    Release();
    return false;
}

void DbSource::OpenForScanning() {
    m_opened = true;
    m_file = quillet::platform::ReadableFile::Open(m_path.ToUtf8());
    if (m_file) {
        const std::optional<quillet::platform::FileStamp> stamp = m_file->Stamp();
        if (stamp && !m_stamp) {
            m_stamp = std::make_unique<quillet::platform::FileStamp>(*stamp);
        } else if (m_stamp && stamp != *m_stamp) {
            m_isFileBad = true;
            Fail("it was changed meanwhile");
            return;
        }
        m_scanner = std::make_unique<quillet::XmlScanner>(
            [file = m_file.get()](char* buffer, std::size_t capacity) {
                return file->Read(buffer, capacity);
            },
            m_blockSize);
    }
}

bool DbSource::ExtractXmlNode(const CString& path, CString& text) {
    if (!IsXmlBased()) {
        return false;
    }
    if (m_eof) {
        text.Empty();
        return false;
    }
    if (!m_opened) {
        OpenForScanning();
    }
    if (!m_scanner) {
        return false;
    }
    std::string bytes;
    const bool found = m_scanner->Extract(path, bytes);
    m_place = m_scanner->Place();
    if (const char* const refusal = m_scanner->Refusal()) {
        text.Empty();
        return Fail(refusal);
    }
    std::string why;
    if (m_file->HasFailed(&why)) {
        text.Empty();
        m_isFileBad = true;
        return Fail(why);
    }
    if (m_scanner->IsEof()) {
        Release();
    }
    text = quillet::IsValidUtf8(bytes) ? CString::FromValidUtf8(std::move(bytes)) : CString();
    return found;
}
