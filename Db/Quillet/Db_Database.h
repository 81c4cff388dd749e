// A catalog database in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Quillet/Db_LogEntry.h"
#include "Quillet/Db_QueryAnalysisParams.h"
#include "Quillet/Db_Source.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableInfo.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"

namespace quillet {
class AccessImporter;
class Upcalls;
class LazyReader;
class Log;
class Registry;
class LastError;
class QueryBuilder;
class SaveGuard;
}  // namespace quillet

// Owns its source, and the structure and contents of every table. Tables are found by name, without regard to
// case, and by index, which is their position in the order of creation: the header table is table 0, the
// properties table is table 1. The file is read lazily: any member that takes a name or an index first reads
// the header and the structure of all tables; the rows of a table are read when they are needed. A changed
// database saves itself to its own file when it is destroyed. Use it from one thread at a time. It can't be
// copied.
class QUILLET_API DbDatabase : public DbItem {
public:
    // How many databases are open in the process.
    static std::int32_t m_openDbCount;
    // How many queries were asked in the process; names the next query table.
    static std::int32_t m_queriesCount;

    // A database without a file.
    DbDatabase();
    // Opens the file, UTF-8 in narrow text, and reads nothing yet. Throws DbException, by pointer, where it
    // can't be read.
    explicit DbDatabase(const quillet::CString& path);
    DbDatabase(const DbDatabase&) = delete;
    DbDatabase& operator=(const DbDatabase&) = delete;
    // Saves a changed database to its own file, as far as that is possible.
    ~DbDatabase() override;

    uint64 GetSize() const override;

protected:
    // Always false: this class does not write Access files.
    virtual bool SaveMdb(const quillet::CString& path);

public:
    // What reading an Access file and copying records said about tables without rows, in the order in which
    // the tables were copied. The lines are kept as long as the database lives.
    const std::vector<quillet::CString>& ImportReport() const;

    // Reads what was not read yet, refreshes the queries, and writes everything but the queries to an XML
    // file. The file is replaced in one step; until then, and on failure, it is unchanged. True when it was
    // written; the database then counts as unchanged. False for a name that does not end in "xml", when a
    // table fails, when the file can't be written, and when it is the file that the database was read from
    // and holds tables or rows that could not be read: they would be lost. The last line of the log says what
    // failed, except for a wrong name; LastSaveError always does. Throws nothing: running out of memory is a
    // failure like the others. Only the database's own file is read as a whole before it is replaced. Call
    // LoadWhole before you save a sequential source to another file, or tables that were not reached are
    // empty there.
    virtual bool Save(const quillet::CString& path);
    // Appends the <database> element to parent, or to the document itself when parent is null. False when a
    // table failed, whose incomplete element stays, or when the document failed, whatever it throws. Throws
    // DbException "Invalid pointer", by pointer, where there is no document, and std::bad_alloc when out of
    // memory.
    virtual bool Save(IDispatch* document, IDispatch* parent);

    // While on, a save over the database's own file, the destructor's included, is refused with a line in the
    // log if the file is no longer what it was at this call: changed, replaced, removed, or created since. A
    // successful save makes the new file the reference. Off by default. Call it before the database is read,
    // and again after Create and SetFile. The call reads the file once.
    void RefuseForeignChanges(bool on);
    // The same for the file at another path instead of the database's own.
    void RefuseForeignChangesOf(const quillet::CString& path);

    // Makes this a new database with an empty header and properties table, for a file that need not exist.
    // Always true. Save or the destructor writes the file, even over one that can't be read.
    bool Create(quillet::CString path);

    // Adds an empty table or query. Null, with a line in the log, if the name is taken. The entry is valid
    // until a table is deleted or renamed, or the source is pointed at another file.
    DbTableInfo* CreateTable(quillet::CString name, DbTableInfo::eType type, const quillet::CString& sql = "",
                             DbTableInfo* related = nullptr);
    // Adds the table that info describes, and takes ownership of its structure and contents, which may be
    // null. Null if the name is taken: ownership stays with the caller then. Structure and contents may be
    // registered under several names; they are deleted with the last of them.
    DbTableInfo* CreateTable(DbTableInfo* info);
    // Deletes a table and every query that depends on it; later tables move up. Nothing for an unknown name.
    void DeleteTable(const quillet::CString& name);
    // Empties a table: fields, indexes, rows. Nothing for an unknown name.
    void ClearTable(const quillet::CString& name);
    // Deletes every table of type query: the answers of all queries and joins, which otherwise live as long
    // as the database, and those that a host made. Returns their number. Cursors on them are closed. Other
    // tables are untouched, and the database counts as changed only if it did before. A query that is asked
    // again gets a new answer with a new name.
    int DropAnswers();
    // Renames a table after reading its rows. False for an unknown name. If the new name is taken, the entry
    // that has it stays, and this table can no longer be found by name: check IsTable first.
    bool RenameTable(quillet::CString oldName, quillet::CString newName);

    bool IsTable(quillet::CString name);
    // Tables and queries together.
    int GetTablesCount();
    // The name as given; empty where there is no such table.
    const quillet::CString& GetTableName(std::size_t index);
    // Null where there is no such table; valid until it is deleted.
    DbTableDescr* GetTableDescr(std::size_t index);
    DbTableDescr* GetTableDescr(const quillet::CString& name);
    // The contents. Rows that were not read yet are read, and a query that is out of date is refreshed.
    DbTableData* GetTableData(std::size_t index);
    DbTableData* GetTableData(const quillet::CString& name);
    // Copies the entry; false for an unknown name.
    bool GetTableInfo(quillet::CString name, DbTableInfo& out);
    // Null for an unknown name; valid as CreateTable says.
    DbTableInfo* GetTableInfo(quillet::CString name);
    // Structure and contents at position 0, without reading anything; null while there is none.
    DbTableDescr* GetHeaderDescr();
    DbTableData* GetHeaderData();

    // Reads the rows of all tables that were not read yet. In sequential access some may not be reached:
    // LastReadError names these tables, and LoadWhole reads them.
    void LoadTables();
    // The same, and whether the database now holds everything in the file. In sequential access this reads
    // the file as a whole, as Save over the file does. LastReadError says why something is missing.
    bool LoadWhole();

    // Copies every table of the records into the database: first the header and the properties, which are
    // created if neither the records nor the database have them, then the others in their order.
    void CopyFrom(const DBACCESS_ALL& all);
    // Copies one table. A table of an unknown name is created, with a field for each column of the first
    // record; a 16-bit column becomes a 32-bit field. A table that exists keeps its fields and loses its
    // rows. Values are stored by position and with the type that they have in the record, whatever the type
    // of the field. Columns beyond the fields are left out, with a line in the log; cells beyond the columns
    // keep the field's default. Records of a table without rows create fields, no row, and a line in the
    // import report.
    void CopyTableFrom(const std::pair<quillet::CString, DBACCESS_VECTOR>& table);
    // The same for the table at an index of the list; nothing where there is none.
    void CopyTableFrom(const DBACCESS_ALL& all, int index);
    // Replaces the records of out by the rows of a table, which are read first; no effect for null. Columns
    // have the names of their fields and the codes of their values' types; values of other types have no
    // code. A 16-bit integer loses its sign. A row with more or fewer cells than the table has fields becomes
    // nameless 16-bit columns of -1.
    void GetTable(DbTableInfo* info, DBACCESS_VECTOR& out);
    // The same by name; out is unchanged if there is no such table.
    void GetTable(const quillet::CString& name, DBACCESS_VECTOR& out);

    // Answers a query (docs/query-language.md): name receives the name of the table that holds the answer.
    // That is a table of type query, named Query_0 and so on. It is brought up to date with its source
    // whenever its data is requested and when the database is saved; it is not saved itself. The rows of
    // "select *" are those of the searched table itself. A query for a whole table, or that is just its name,
    // is answered by the table itself; a query that was asked before is answered by the same query table.
    // False for a text that can't be answered; name has no meaning then. The log says why, except for
    // brackets that don't match.
    bool Query(quillet::CString sql, quillet::CString& name);
    // Parses a query text. The conditions become filters of the first table's descriptor and stay there until
    // they are cleared. False, with lines in the log, for a text that can't be answered; false without a line
    // for null and for a record without a clause.
    bool AnalyzeSQL(quillet::CString sql, parser::QueryAnalysisParams* params);
    // Whether AnalyzeSQL succeeds; its filters are removed again.
    bool VerifySQL(quillet::CString sql);

    // Joins two tables: name of the first, name of the second, a field of the first, one of the operators <,
    // <=, =, ==, >=, >, != and <>, and a field of the second, which must be of the same type. A row of the
    // answer holds the cells of a row of the first table and of a row of the second for which the comparison
    // is true, as in the condition of a query. Rows are in the order of the first table, then of the second.
    // A field whose name is taken gets the name of its table and a dot in front.
    //
    // The answer is a table of type query, whose name is returned: "first INNER JOIN second ON left operator
    // right". It holds copies and does not follow its tables; calling the join again fills it anew. It is
    // deleted with the first table. Equality takes linear time, any other operator one comparison per pair.
    // Names may be in square brackets; the name of the answer keeps those of the fields, not those of the
    // tables. Empty, with a line in the log, for unknown tables or fields, for a condition that can't be
    // evaluated, if another table has the answer's name, and if one of the tables is a query that depends on
    // the answer.
    quillet::CString inner_join(quillet::CString first, quillet::CString second, quillet::CString left,
                                quillet::CString op, quillet::CString right);
    // The same, "first RIGHT JOIN second ON left operator right", followed by the unmatched rows of the
    // second table, in which the fields of the first are null.
    quillet::CString right_join(quillet::CString first, quillet::CString second, quillet::CString left,
                                quillet::CString op, quillet::CString right);
    // Joins nothing; empty.
    quillet::CString left_join(quillet::CString first, quillet::CString second, quillet::CString left,
                               quillet::CString op, quillet::CString right);

    bool CanUpdate() const;
    bool IsOpen() const;
    // The path of the source.
    const quillet::CString& GetName() const;
    DbSource* GetSource() { return m_source.get(); }

    // Reads the rows in the text of a <table> element into the table of that name. Throws DbException
    // "Invalid pointer", by pointer, if the text is no such element or the table is unknown.
    void ParseXmlTableData(const quillet::CString& xml);

    // Why the last Save failed, in one line; empty after one that succeeded and before the first.
    quillet::CString LastSaveError() const;
    // Why the last reading of the file did not bring everything in it, in one line; empty if it did, and
    // after a Save over the file. At the end of sequential access the line names the tables that were not
    // reached; only LoadWhole finds what sequential access can't see.
    quillet::CString LastReadError() const;
    // The same, with what the line is about. Its kind is NoCatalog if the file is not laid out as a catalog
    // and no more is known.
    DbLogEntry LastReadFault() const;
    // Whether the last reading or the last Save failed because there was no memory.
    bool RanOutOfMemory() const;

    // Appends the lines of the log to out and empties the log.
    void GetError(std::vector<quillet::CString>& out);
    // The same, with what each line is about.
    void GetLogEntries(std::vector<DbLogEntry>& out);
    // All lines of the log with "\r\n" between them.
    quillet::CString GetErrorLog();
    // Shows them in a message box.
    void ShowErrorLog();
    // Empties the log.
    void ClearLog();
    // From now on the log keeps only this many lines, the latest ones. 0, the default, keeps all.
    void SetLogLimit(std::size_t lines);

    // Points to this object as long as it lives, for those who keep a database that they don't own.
    std::weak_ptr<DbDatabase*> LifeToken() const { return m_life; }

private:
    friend class DbSource;
    friend class quillet::Upcalls;

    // Back to the state before anything was read; the log is kept.
    void Clear();
    bool TrySave(const quillet::CString& path);
    bool SaveXml(const quillet::CString& path);
    void LogFailedSave(const quillet::CString& path) noexcept;

    // Points to this object as long as it lives.
    std::shared_ptr<DbDatabase*> m_life;
    std::unique_ptr<quillet::Log> m_log;
    std::unique_ptr<quillet::Registry> m_registry;
    std::unique_ptr<DbSource> m_source;
    std::unique_ptr<quillet::AccessImporter> m_importer;
    std::unique_ptr<quillet::LazyReader> m_reader;
    std::unique_ptr<quillet::QueryBuilder> m_queries;
    std::unique_ptr<quillet::LastError> m_saveError;
    // Null where any file is saved over.
    std::unique_ptr<quillet::SaveGuard> m_guard;
};
