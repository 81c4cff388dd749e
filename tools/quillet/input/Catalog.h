// A catalog file as the commands use it.
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

// What became of a query.
struct Reply {
    bool m_isAnswered;
    // Whether the text was read as a query; otherwise it is the name of a table.
    bool m_isOfQuery;
    // The name of the table that holds the answer; empty where there is none.
    std::string m_table;
    // Why there is none.
    std::string m_complaint;
};

// Owns the database over a file. The file is written by Save and by nothing else, whatever the model marks as
// changed. What can't be done throws Failure, which names the file.
class Catalog {
public:
    // Opens an existing file and reads nothing yet.
    Catalog(const std::string& path, const Settings& settings);
    Catalog(Catalog&& other) noexcept = default;
    Catalog(const Catalog&) = delete;
    Catalog& operator=(const Catalog&) = delete;
    ~Catalog();

    // A catalog for a file that does not exist yet. It is saved only if nobody else has made the file until
    // then.
    static Catalog Create(const std::string& path, const Settings& settings);
    // Opens a file to be changed and reads all of it. Refuses a file that can't be written, and one that was
    // not understood completely: writing it would make the loss permanent. Other writers are kept out as long
    // as the catalog lives, and the file is saved only if it still is the one that was read.
    static Catalog OpenForEditing(const std::string& path, const Settings& settings);

    DbDatabase& Database() { return *m_database; }
    const std::string& Path() const { return m_path; }
    bool IsXml() { return m_database->GetSource()->IsXmlBased(); }

    // Reads the structure of all tables, and refuses a file that is no catalog.
    void ReadStructure();
    // Reads the structure and every table's rows, as far as they can be understood.
    void ReadAll();

    std::vector<std::string> TableNames();
    // The position of a table, which is found without regard to case.
    std::size_t FindIndex(const std::string& name);
    // The table at a position, or of a name; its rows are read.
    Table TableAt(std::size_t index);
    Table FindTable(const std::string& name);

    // Answers a query. A text that is the name of a table, as it stands or in square brackets, asks for that
    // table, whatever words are in it. Refuses a query over a table whose rows can't all be read.
    Reply Ask(const std::string& query);

    // Takes the entries of the log and keeps the faults among them; returns those about a query.
    std::vector<DbLogEntry> CollectLog();
    // What reading found wrong so far.
    const std::vector<DbLogEntry>& Faults() const { return m_faults; }
    // Whether reading came to the end of the file before it had everything that a catalog has; and why, with
    // what helps.
    bool IsIncomplete() const;
    std::string WhyIncomplete() const;
    // Says on standard error, in one line, that faults were found.
    void WarnOfFaults() const;

    // Writes the file.
    void Save() { SaveAs(m_path); }
    // Writes another file. Throws Failure, which names it, and the file is as it was.
    void SaveAs(const std::string& path);

    // Throws Failure where reading found anything wrong: the consequence, why, and how to learn more.
    void RefuseFaults(const std::string& consequence) const;

    // Refuses a text with a character that the file can't carry; what says whose it is.
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
    // Whether an Access file was asked for what it should hold.
    bool m_isCompared = false;
    // Let go when the database is.
    std::unique_ptr<platform::FileLock> m_lock;
    std::unique_ptr<DbDatabase> m_database;
    std::vector<DbLogEntry> m_faults;
};

// The tables that every catalog has, at the positions 0 and 1.
constexpr const char* HeaderName = "Header";
constexpr const char* PropertiesName = "Properties";
bool IsHeaderOrProperties(const std::string& name);

std::vector<std::string> FieldNames(const DbTableDescr& descr);

// Whether the path ends as XML catalogs do.
bool HasXmlEnding(const std::string& path);

// The part of a path that people call the file.
std::string FileName(const std::string& path);

// Puts a line of the program's own on standard error: "quillet: message".
void Complain(const std::string& message);

}  // namespace quillet::tool
