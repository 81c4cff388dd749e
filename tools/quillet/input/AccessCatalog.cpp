#include "input/AccessCatalog.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <vector>

#include "Quillet/dbaccess/AccessFile.h"
#include "Quillet/dbaccess/CTables.h"
#include "Quillet/dbaccess/DBACCESS.h"
#include "Quillet/odbc/Connection.h"
#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/platform/File.h"
#include "Quillet/platform/FileVersion.h"
#include "Quillet/platform/MessageBox.h"
#include "System.h"
#include "input/Catalog.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"
#include "output/TableProgress.h"

namespace quillet::tool {

namespace {

// Over the version of the target that was seen, if there is one.
void CopyFile(const std::string& source, const std::string& target, platform::FileVersion* seen = nullptr) {
    std::string why;
    const std::optional<std::string> bytes = platform::ReadWholeFile(source, &why);
    if (!bytes) {
        throw Failure(source + ": " + why);
    }
    const std::unique_ptr<platform::AtomicFile> file = platform::AtomicFile::Create(target, &why);
    if (!file || !file->Write(*bytes, &why) ||
        !(seen != nullptr ? file->CommitOver(*seen, &why) : file->Commit(&why))) {
        throw Failure(target + ": " + why);
    }
}

// A copy beside a file, removed at the end.
class WorkingCopy {
public:
    explicit WorkingCopy(const std::string& path) {
        std::random_device random;
        do {
            m_path = path.substr(0, path.size() - 4) + "-" + std::to_string(random()) + ".mdb";
        } while (platform::PathExists(m_path));
        CopyFile(path, m_path);
    }
    WorkingCopy(const WorkingCopy&) = delete;
    WorkingCopy& operator=(const WorkingCopy&) = delete;
    ~WorkingCopy() {
        std::error_code ignored;
        std::filesystem::remove(std::u8string(m_path.begin(), m_path.end()), ignored);
    }

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

// Collects what the library would show in message boxes.
class KeptMessages {
public:
    KeptMessages()
        : m_before(platform::SetMessageHandler([this](platform::WideView text, platform::WideView) {
              m_texts.push_back(CString(text).ToUtf8());
          })) {}
    KeptMessages(const KeptMessages&) = delete;
    KeptMessages& operator=(const KeptMessages&) = delete;
    ~KeptMessages() { platform::SetMessageHandler(std::move(m_before)); }

    const std::vector<std::string>& Texts() const { return m_texts; }

private:
    std::vector<std::string> m_texts;
    platform::MessageHandler m_before;
};

// The Access driver, as named in the connect string.
std::string DriverName() {
    const std::string format = DBACCESS::m_connectFormat.ToUtf8();
    const std::string key = "Driver={";
    const std::size_t begin = format.find(key) + key.size();
    return "the ODBC driver '" + format.substr(begin, format.find('}', begin) - begin) + "'";
}

// Why a file is not open.
std::string WhyClosed(const DBACCESS& access, const std::string& path) {
    if (access.IsDriverMissing()) {
        return DriverName() + " is missing: " + ReadingDriverHint();
    }
    // The library's own messages begin with the path.
    const std::string why = access.GetOpenError().ToUtf8();
    const std::string beginning = path + ": ";
    return why.starts_with(beginning) ? why.substr(beginning.size()) : why;
}

// Whether the driver lists anything, even only the system tables, which every Access file has.
bool ListsTables(const std::string& path) {
    try {
        const auto connection = std::make_shared<odbc::Connection>();
        OpenAccessFile(*connection, DBACCESS::m_connectFormat, path, DBACCESS::ReadOnly | DBACCESS::NoDialog);
        CTables tables(connection);
        tables.m_typeFilter.Empty();
        return tables.Open() && !tables.IsEOF();
    } catch (odbc::DatabaseError* error) {
        error->Delete();
        return false;
    }
}

bool HaveSameNames(const DBACCESS_RECORD& left, const DBACCESS_RECORD& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const DBACCESS_COLUMN& one, const DBACCESS_COLUMN& other) {
                          return one.m_name.CompareNoCase(other.m_name) == 0;
                      });
}

// Rows are written to a table by position, so an existing table must have the fields of the catalog in the
// same order.
void CheckFields(const std::string& path, DBACCESS& access, const DBACCESS_ALL& tables) {
    for (const auto& [name, rows] : tables) {
        DBACCESS_RECORD there;
        if (access.GetRecordset(name, there) && !there.empty() && !HaveSameNames(there, rows.front())) {
            std::vector<std::string> names;
            for (const DBACCESS_COLUMN& column : there) {
                names.push_back(column.m_name.ToUtf8());
            }
            throw Failure(path + ": not converted: table " + Quoted(name.ToUtf8()) +
                          " is there with other fields: " + JoinNames(names));
        }
    }
}

// Whether two rows have fields with the same names, and the same text wherever both have one.
bool HaveSameTexts(const DBACCESS_RECORD& left, const DBACCESS_RECORD& right) {
    const auto isSame = [](const DBACCESS_COLUMN& one, const DBACCESS_COLUMN& other) {
        return one.m_type != DBACCESS_COLUMN::Text || other.m_type != DBACCESS_COLUMN::Text ||
               one.m_text == other.m_text;
    };
    return HaveSameNames(left, right) &&
           std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame);
}

// Some drivers accept names that they can't store, and texts that they truncate.
void CheckWritten(const std::string& path, DBACCESS& access, const DBACCESS_ALL& tables) {
    for (const auto& [name, rows] : tables) {
        DBACCESS_VECTOR there;
        if (!access.GetTableData(name, there) ||
            !std::equal(there.begin(), there.end(), rows.begin(), rows.end(), HaveSameTexts)) {
            throw Failure(path + ": not converted: " + DriverName() + " gives table " +
                          Quoted(name.ToUtf8()) + " back with other fields, rows or texts than were written");
        }
    }
}

// Throws Failure unless every table was written.
void WriteTables(const std::string& path, const std::string& copy, const DBACCESS_ALL& tables) {
    const KeptMessages messages;
    const TableProgress progress("Writing " + FileName(path));
    DbSerializer::Save(copy, tables);
    if (!progress.FailedTable().empty() || !messages.Texts().empty()) {
        throw Failure(path + ": not converted: table " + Quoted(progress.FailedTable()) +
                      (messages.Texts().empty() ? std::string() : ": " + messages.Texts().front()));
    }
}

// The tables that have no rows; written again, they lose the row that described their fields.
DBACCESS_ALL EmptyTables(const DBACCESS_ALL& tables) {
    DBACCESS_ALL empty;
    for (const auto& [name, rows] : tables) {
        if (rows.m_noRows) {
            empty.emplace_back(name, DBACCESS_VECTOR());
        }
    }
    return empty;
}

}  // namespace

std::string WhyNoAccess(const std::string& path) {
    DBACCESS access(CString(path).GetString());
    if (!access.IsOpen()) {
        return WhyClosed(access, path);
    }
    std::vector<CString> names;
    if (!access.GetTables(names) || (names.empty() && !ListsTables(path))) {
        return "its tables can't be listed";
    }
    for (const CString& name : names) {
        DBACCESS_VECTOR rows;
        if (!access.GetTableData(name, rows)) {
            return "table " + Quoted(name.ToUtf8()) + " can't be read";
        }
    }
    return {};
}

std::vector<DbLogEntry> MissingRows(const std::string& path, DbDatabase& database) {
    DBACCESS access(CString(path).GetString());
    std::vector<CString> names;
    access.GetTables(names);
    std::vector<DbLogEntry> faults;
    for (const CString& name : names) {
        const int stated = access.GetStatedRowsNumber(name);
        DbTableData* const data = database.GetTableData(name);
        const std::size_t read = data == nullptr ? 0 : data->size();
        if (stated >= 0 && read != static_cast<std::size_t>(stated)) {
            faults.push_back({DbLogEntry::Kind::ReadFault,
                              "Table " + Quoted(name.ToUtf8()) + ": " + std::to_string(read) + " of " +
                                  Counted(static_cast<std::size_t>(stated), "row") + " can be read",
                              name});
        }
    }
    return faults;
}

void FillAccessFile(const std::string& path, const DBACCESS_ALL& tables) {
    platform::FileVersion seen = platform::FileVersion::Of(path);
    const WorkingCopy copy(path);
    {
        DBACCESS access(CString(copy.Path()).GetString(), DBACCESS::NoDialog);
        if (!access.IsOpen()) {
            throw Failure(path + ": not converted: " + WhyClosed(access, copy.Path()));
        }
        if (!access.CanUpdate()) {
            throw Failure(path + ": not converted: " + DriverName() +
                          " does not write: " + WritingDriverHint());
        }
        CheckFields(path, access, tables);
    }
    WriteTables(path, copy.Path(), tables);
    {
        DBACCESS access(CString(copy.Path()).GetString());
        CheckWritten(path, access, tables);
    }
    WriteTables(path, copy.Path(), EmptyTables(tables));
    CopyFile(copy.Path(), path, &seen);
}

bool HasAccessEnding(const std::string& path) {
    return CString(path).Right(4).CompareNoCase(".mdb") == 0;
}

}  // namespace quillet::tool
