// A catalog file for the commands.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Failure.h"
#include "Quillet/Db_Database.h"
#include "Quillet/platform/FileLock.h"
#include "Settings.h"

namespace quillet::tool {

// A table that was found, its rows read.
struct Table {
    std::string m_name;
    DbTableDescr* m_descr;
    DbTableData* m_data;
};

// The result of a query.
struct QueryResult {
    bool m_isAnswered;
    // Whether the text was treated as a query; otherwise it is the name of a table.
    bool m_isQuery;
    // The name of the table that holds the answer; empty if there is none.
    std::string m_table;
    // Why there is none.
    std::string m_reason;
};

// Owns the database of a file. Only Save writes the file, whatever the model marks as changed. Failures throw
// Failure, which names the file.
class Catalog {
public:
    // Opens an existing file and reads nothing yet.
    Catalog(const std::string& path, const Settings& settings);
    Catalog(Catalog&& other) noexcept = default;
    Catalog(const Catalog&) = delete;
    Catalog& operator=(const Catalog&) = delete;
    ~Catalog();

    // A catalog for a file that does not exist yet. It is saved only if no other program has created the file
    // by then.
    static Catalog Create(const std::string& path, const Settings& settings);
    // Opens a file for changes and reads all of it. Refuses a file that can't be written, and one that could
    // not be read completely, because saving would make the loss permanent. The file is locked against other
    // writers for the catalog's lifetime, and saved only if it is still the one that was read.
    static Catalog OpenForEditing(const std::string& path, const Settings& settings);

    DbDatabase& Database() { return *m_database; }
    const std::string& Path() const { return m_path; }
    bool IsXml() { return m_database->GetSource()->IsXmlBased(); }

    // Reads the structure of all tables, and refuses a file that is not a catalog.
    void ReadStructure();
    // Reads the structure and every table's rows, as far as possible.
    void ReadAll();

    std::vector<std::string> TableNames();
    // The position of a table; names are case-insensitive.
    std::size_t FindIndex(const std::string& name);
    // The table at a position, or of a name; its rows are read.
    Table TableAt(std::size_t index);
    Table FindTable(const std::string& name);

    // Answers a query. A text that is the name of a table, with or without square brackets, means that table,
    // whatever words are in it. Refuses a query over a table whose rows can't all be read.
    QueryResult Query(const std::string& query);

    // Takes the entries of the log and keeps those that report errors; returns those about a query.
    std::vector<DbLogEntry> CollectLog();
    // The errors found by reading so far.
    const std::vector<DbLogEntry>& Faults() const { return m_faults; }
    // Whether reading reached the end of the file before the catalog was complete; and why, with what helps.
    bool IsIncomplete() const;
    std::string WhyIncomplete() const;
    // Reports on standard error, in one line, that errors were found.
    void WarnOfFaults() const;

    // Writes the file.
    void Save() { SaveAs(m_path); }
    // Writes another file. Throws Failure, which names that file and leaves it unchanged.
    void SaveAs(const std::string& path);

    // Throws Failure if reading found any error: the consequence, the reason, and how to learn more.
    void RefuseFaults(const std::string& consequence) const;

    // Refuses a text with a character that can't be written to the file; what describes the text.
    void RefuseUncarriable(const std::string& what, const std::string& text) const;

    // "FILE: message".
    Failure Failed(const std::string& message) const { return Failure(m_path + ": " + message); }

private:
    Catalog(const std::string& path, const Settings& settings, std::unique_ptr<DbDatabase> database);

    void TryReadStructure();
    void RefuseUnreadable();
    void RefuseMisplacedHeader();

    std::string m_path;
    bool m_showsLog;
    // Whether the whole file was found to be XML.
    bool m_isWellFormed = false;
    // Whether an Access file was checked for missing rows.
    bool m_isCompared = false;
    // Released with the database.
    std::unique_ptr<platform::FileLock> m_lock;
    std::unique_ptr<DbDatabase> m_database;
    std::vector<DbLogEntry> m_faults;
};

// The tables that every catalog has, at the positions 0 and 1.
constexpr const char* HeaderName = "Header";
constexpr const char* PropertiesName = "Properties";
bool IsHeaderOrProperties(const std::string& name);

std::vector<std::string> FieldNames(const DbTableDescr& descr);

// Whether the path has the extension of XML catalogs.
bool HasXmlEnding(const std::string& path);

// The file name of a path.
std::string FileName(const std::string& path);

// Prints one of the program's own lines on standard error: "quillet: message".
void Complain(const std::string& message);

}  // namespace quillet::tool
