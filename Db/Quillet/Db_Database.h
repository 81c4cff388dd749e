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

// Owns the source behind it, and every table's structure and contents. Tables are found by name, without
// regard to case, and by index, their position in the order of creation; the header table is table 0 and the
// properties table 1. The file is read lazily: whatever takes a name or an index first reads the header and
// the structure of all tables, a table's rows are read when they are asked for. A database that was changed
// saves itself to its own file when it is destroyed. It is used from one thread at a time and can't be
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
    // Writes an Access file; false, for no such file is written by this class.
    virtual bool SaveMdb(const quillet::CString& path);

public:
    // The lines about tables without rows that reading an Access file and copying records left, in the order
    // in which the tables were copied. They stay as long as the database lives.
    const std::vector<quillet::CString>& ImportReport() const;

    // Reads what was not read yet, refreshes the queries and writes everything but the queries to an XML
    // file, in one step: until then, and on failure, the file is what it was. True when it was written and
    // the database counts as unchanged. False for a name that ends otherwise than in "xml", when a table
    // fails, when the file can't be written, and when it is the file that the database was read from and
    // holds tables or rows that could not be read, which would be lost. The last line of the log says what
    // failed, but for a name that ends otherwise; LastSaveError does so in any case. Throws nothing: running
    // out of memory is such a failure. Only that file is read as a whole before it is replaced: before you
    // save a sequential source to another one, ask LoadWhole, or tables that were not reached are empty
    // there.
    virtual bool Save(const quillet::CString& path);
    // Appends the <database> element to parent, or to the document itself when parent is null. False when a
    // table failed, which leaves its incomplete element, or the document failed, by whatever it throws.
    // Throws DbException "Invalid pointer", by pointer, where there is no document, and std::bad_alloc when
    // we are out of memory.
    virtual bool Save(IDispatch* document, IDispatch* parent);

    // While on, a save over the database's own file, the destructor's too, is refused with a line in the log
    // where that is no longer what it was at this call: changed, replaced, removed, or there by now. A save
    // that succeeds makes the new file the one that counts. Off at first. Ask before the database is read,
    // and anew after Create and SetFile; the file is read once for it.
    void RefuseForeignChanges(bool on);
    // The same for the file at another path, in place of the database's own.
    void RefuseForeignChangesOf(const quillet::CString& path);

    // Makes this a new database for a file that need not exist yet, with an empty header and properties
    // table. Always true; Save, or the destructor, writes it, also over a file that can't be read.
    bool Create(quillet::CString path);

    // Adds an empty table or query. Null, with a line in the log, where the name is taken. The entry lives
    // until a table is deleted or renamed or the source is pointed at another file.
    DbTableInfo* CreateTable(quillet::CString name, DbTableInfo::eType type, const quillet::CString& sql = "",
                             DbTableInfo* related = nullptr);
    // Adds the table that info describes and takes over its structure and contents, which may be null. Null
    // where the name is taken: nothing is taken over then. Structure and contents may stand under several
    // names; they go with the last of them.
    DbTableInfo* CreateTable(DbTableInfo* info);
    // Deletes a table and every query that stands on it; later tables move up. Nothing for an unknown name.
    void DeleteTable(const quillet::CString& name);
    // Empties a table: fields, indexes, rows. Nothing for an unknown name.
    void ClearTable(const quillet::CString& name);
    // Deletes every table of type query: the answers of all queries and joins, which otherwise stay as long
    // as the database, and those that a host made. Returns how many there were. Cursors on them are closed.
    // Tables stay as they are, and the database counts as changed only where it did before: a query that is
    // asked again is answered anew, under a new name.
    int DropAnswers();
    // Renames a table, reading its rows first. False for an unknown name. Where the new name is taken, the
    // entry that has it stays and this table is found no more by name: ask IsTable before.
    bool RenameTable(quillet::CString oldName, quillet::CString newName);

    bool IsTable(quillet::CString name);
    // Tables and queries together.
    int GetTablesCount();
    // The name as given; empty where there is no such table.
    const quillet::CString& GetTableName(std::size_t index);
    // Null where there is no such table; valid until it is deleted.
    DbTableDescr* GetTableDescr(std::size_t index);
    DbTableDescr* GetTableDescr(const quillet::CString& name);
    // The contents; rows that still stand in the file are read, and a query that is out of step is refreshed.
    DbTableData* GetTableData(std::size_t index);
    DbTableData* GetTableData(const quillet::CString& name);
    // Copies the entry; false for an unknown name.
    bool GetTableInfo(quillet::CString name, DbTableInfo& out);
    // Null for an unknown name; valid as CreateTable says.
    DbTableInfo* GetTableInfo(quillet::CString name);
    // Structure and contents at position 0, without reading anything; null while there is none.
    DbTableDescr* GetHeaderDescr();
    DbTableData* GetHeaderData();

    // Reads the rows of every table that still stand in the file. In sequential access they may not all be
    // reached: LastReadError names the tables then, and LoadWhole reads them.
    void LoadTables();
    // The same, and whether everything that the file holds is in the database now, as Save over the file
    // finds out: in sequential access the file is read as a whole for it. LastReadError says what is missing.
    bool LoadWhole();

    // Copies every table of the records into the database: the header and the properties first, whose tables
    // are made where neither the records nor the database have them, then the others in their order.
    void CopyFrom(const DBACCESS_ALL& all);
    // Copies one table. One of an unknown name is made, with a field for each column of its first record,
    // whose type follows from the column's: a 16-bit column gives a 32-bit field. One that is there keeps its
    // fields and loses its rows. Values are stored by position and with the type that they have in the
    // record, whatever the field's is; columns beyond the fields are left out, with a line in the log, and
    // cells beyond the columns keep the field's default. Records of a table without rows make fields and no
    // row, and a line in the import report.
    void CopyTableFrom(const std::pair<quillet::CString, DBACCESS_VECTOR>& table);
    // The same for the table at an index of the list; nothing where there is none.
    void CopyTableFrom(const DBACCESS_ALL& all, int index);
    // Replaces the records of out by the rows of a table, which are read first; nothing for null. Values have
    // the columns' codes, with their fields' names; values of other types have none. A 16-bit integer comes
    // without its sign. A row that has more or fewer cells than the table has fields becomes nameless 16-bit
    // columns of -1.
    void GetTable(DbTableInfo* info, DBACCESS_VECTOR& out);
    // The same by name; out stays as it is where there is no such table.
    void GetTable(const quillet::CString& name, DBACCESS_VECTOR& out);

    // Answers a query (docs/query-language.md): name receives the name of the table that holds the answer.
    // That is a table of type query, named Query_0 and so on, which follows the tables that it was computed
    // from whenever its data is asked for and when the database is saved; it is not saved itself. The rows of
    // "select *" are those of the table that was searched. A query that asks for a whole table, or is nothing
    // but its name, is answered by the table itself, and one that was asked before by the same query table.
    // False for a text that can't be answered, with lines in the log, but for brackets that don't match: no
    // line gives that reason. name has no meaning then.
    bool Query(quillet::CString sql, quillet::CString& name);
    // Takes a query text apart. The conditions become filters of the first table's descriptor, where they
    // stay until they are cleared there. False, with lines in the log, for a text that can't be answered;
    // without a line for null and for a record without a clause.
    bool AnalyzeSQL(quillet::CString sql, parser::QueryAnalysisParams* params);
    // Whether AnalyzeSQL succeeds. Its filters are removed then.
    bool VerifySQL(quillet::CString sql);

    // Joins two tables: name of the first, name of the second, a field of the first, one of the operators <,
    // <=, =, ==, >=, >, != and <>, and a field of the second, which must be of the same type. A row of the
    // answer holds the cells of a row of the first table and those of a row of the second for which the
    // comparison is true, as a condition of a query has it; rows come in the first table's order, then in the
    // second's. A field whose name is taken gets its table's name and a dot before its own.
    //
    // The answer is a table of type query, whose name is returned: "first INNER JOIN second ON left operator
    // right". It holds copies, does not follow its tables, and is filled anew by calling the join again; it
    // goes with the first table. Equality takes linear time, another operator a comparison for each pair.
    // Names may stand in square brackets; the answer's name has those of the fields, not of the tables.
    // Empty, with a line in the log, for unknown tables or fields, for a condition that can't be, where
    // another table has the answer's name, and where one of the tables is a query that stands on the answer.
    quillet::CString inner_join(quillet::CString first, quillet::CString second, quillet::CString left,
                                quillet::CString op, quillet::CString right);
    // The same, "first RIGHT JOIN second ON left operator right", followed by the rows of the second table
    // that match none: the fields of the first are null there.
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
    // "Invalid pointer", by pointer, where the text is no such element or the table is unknown.
    void ParseXmlTableData(const quillet::CString& xml);

    // Why the last Save failed, in one line; empty after one that succeeded and before the first.
    quillet::CString LastSaveError() const;
    // Why the last reading of the file did not bring everything in it, in one line; empty after one that did,
    // and after a Save over the file. In sequential access that has come to its end, the line names tables
    // that were not reached; what it can't have seen only LoadWhole finds out.
    quillet::CString LastReadError() const;

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
    // From now on the log keeps so many lines, the latest ones; 0, as it begins, keeps all.
    void SetLogLimit(std::size_t lines);

    // Names this object as long as it lives: whoever keeps a database that somebody else owns asks here.
    std::weak_ptr<DbDatabase*> LifeToken() const { return m_life; }

private:
    friend class DbSource;
    friend class quillet::Upcalls;

    // Back to a database that has read nothing; the log is kept.
    void Clear();
    bool TrySave(const quillet::CString& path);
    bool SaveXml(const quillet::CString& path);
    void LogFailedSave(const quillet::CString& path) noexcept;

    // Names this object as long as it lives.
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
