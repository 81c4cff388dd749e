// A cursor over the rows of one table.
#pragma once

#include <cstdint>
#include <memory>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

class DbDatabase;
class DbQueryDef;
class DbTableDef;

namespace quillet {
class Bookmarks;
class CurrentIndex;
class FieldBindings;
class PendingEdit;
class RowCondition;
}  // namespace quillet

// Moves a position over the rows of a table or of a query's answer: 0 is the first row, -1 is before it
// (BOF), the number of rows and anything above is after the last one (EOF). With a current index the
// positions follow its order. Every move that reaches a row sets the bound variables from it.
//
// The cursor is the caller's and owns neither table nor database, except a database that it opened itself. A
// cursor whose table was deleted, or whose database is gone, is closed: a new table of the old name does not
// open it. Reads and moves don't throw; what throws says so, and throws DbException by pointer.
class QUILLET_API DbRecordset {
public:
    enum eFindOperation : std::int32_t { Next = 0, Previous = 1, First = 2, Last = 3 };
    enum eFindDirection : std::int32_t { Forward = 0, Backward = 1 };

    // Sets a variable from a value of the row, and a value of the row from a variable.
    using ReadFunction = void (*)(const quillet::CComVariant& value, void* variable);
    using WriteFunction = void (*)(quillet::CComVariant& value, const void* variable);

    // The bookmark that was handed out last in the process, less 1.
    static uint64 bookmarkid;

    // Closed. The database is not owned; without one, Open makes its own.
    explicit DbRecordset(DbDatabase* db);
    DbRecordset(const DbRecordset&) = delete;
    DbRecordset& operator=(const DbRecordset&) = delete;
    virtual ~DbRecordset();

    // Opens the table of that name, or the answer of a query (DbDatabase::Query), at its first row; true also
    // where it has none. Without a database it first opens its own, with the file of GetDefaultDBName. A text
    // that contains "select", even as part of a word, is a query: for a table called Selection use OpenTable.
    // False where the file can't be read, the query can't be answered or the database is gone; a cursor that
    // was open stays so. One that goes over to another table drops a pending edit and the current index, and
    // keeps bookmarks and bindings. What InitFieldExchange throws comes through.
    virtual bool Open();
    virtual bool Open(quillet::CString sql);
    // The same for the table, or the answer, of that name, whatever the name is: found without regard to
    // case, and never read as a query. Square brackets are letters of the name. False for an unknown name,
    // without a line in the log.
    bool OpenTable(quillet::CString name);
    // Goes over to the definition's database, as SetDatabase does, and opens its table, or its query, by the
    // form above: of a table called Selection the name is read as a query here too. False for a definition
    // that is not open, and where the table or the query can't be opened: the cursor is closed then. Throws
    // where the definition is null.
    virtual bool Open(DbTableDef* def);
    virtual bool Open(DbQueryDef* def);
    // Releases table and database, drops a pending edit, and forgets bindings, bookmarks and the row that was
    // updated last. The cursor's own database is deleted, and so saved if it was changed.
    virtual void Close();

    // The moves. Each drops a pending edit first. True where a row was reached and read; the position moves
    // in any case, except that MovePrev never goes below -1 and MoveLast stays where there are no rows.
    virtual bool Move(long rows);
    virtual bool MoveFirst();
    virtual bool MoveNext();
    virtual bool MoveLast();
    virtual bool MovePrev();

    // Finds a row for which the condition holds, and moves there: the part of a query after WHERE, such as
    // "a > 5 and b = 'x'" (docs/query-language.md). An empty text holds for every row. The search begins
    // after the current row or before it, or at one end. All drop a pending edit.
    //
    // An operator or bracket at the first or second character of the text is not separated from its
    // neighbours: "a=1" and "(a = 1)" are no conditions. Condition("a=1") is one; pass every text that a user
    // types through it.
    //
    // False, without a move, where there is no such row, the cursor is closed, or the text is no condition:
    // the log says why, but for brackets that don't match, with which no row fits. A table that was renamed
    // since it was opened is unknown to its conditions, even where another table has taken the name: open it
    // again (GetTableName).
    virtual bool Find(eFindOperation operation, quillet::CString where);
    // The first row for which the condition holds. Condition(where) puts blanks before an operator in front.
    virtual bool FindFirst(quillet::CString where);
    // The next one after the current row. Condition(where) puts blanks before an operator in front.
    virtual bool FindNext(quillet::CString where);
    // The next one before the current row. Condition(where) puts blanks before an operator in front.
    virtual bool FindPrev(quillet::CString where);
    // The last row for which the condition holds. Condition(where) puts blanks before an operator in front.
    virtual bool FindLast(quillet::CString where);
    // The text as a condition for the finds that is read from its first character on: with two blanks in
    // front, which mean nothing.
    static quillet::CString Condition(const quillet::CString& text);

    // Makes the named index current and moves to the first row, in its order, whose values equal the keys:
    // the first count fields of the index, or all of them. The array must hold that many keys. Drops a
    // pending edit. False where no row is equal: the position stays the same, in the order of the index now.
    // False, without any change, where there is no such index or it lost a field. An index that is current
    // already keeps its order (see SetCurrentIndex), in which rows that were changed since may be missed.
    virtual bool Seek(quillet::CString index, quillet::CComVariant* keys, uint64 count);
    virtual bool Seek(quillet::CString index, quillet::CComVariant* keys);

    // Bookmarks are numbers that the process never hands out twice; 0 refers to the row that was last updated
    // when GetLastModifiedBookmark was last called. A bookmark refers to a position, not to a row, and
    // follows the deletions of this cursor only. Getting and setting one drops a pending edit. SetBookmark is
    // true for a known bookmark even where there is no row.
    virtual bool IsBookmark(uint64 bookmark) const;
    virtual uint64 GetBookmark();
    virtual bool SetBookmark(uint64 bookmark);
    virtual uint64 GetLastModifiedBookmark();

    // Moves to any position and keeps a pending edit. False where there is no row; the position is set all
    // the same.
    virtual bool SetAbsolutePosition(long position);
    virtual long GetAbsolutePosition();

    virtual bool IsOpen();
    // The current name of the open table or answer, also after a rename. Empty while closed, and for a table
    // that lost its name to another one.
    quillet::CString GetTableName() const;
    // A closed cursor is after its last row.
    virtual bool IsEOF() const;
    virtual bool IsBOF() const;
    // Always false.
    virtual bool IsDeleted();

    // IsFieldNull tells whether the field that a bound variable follows is null: by its flag, or because it
    // holds nothing. SetFieldNull sets the flag, which stays when a value is stored. Both use the row at the
    // position without regard to the current index, and throw outside the rows and for a variable that is not
    // bound.
    virtual bool IsFieldNull(void* variable);
    virtual void SetFieldNull(void* variable);

    // 0 while closed.
    virtual long GetRecordCount() const;
    virtual uint64 GetFieldCount() const;
    // Whether Update and Delete are allowed: not while closed, for a read-only source, a table that was
    // renamed, and for a query whose rows are copies.
    virtual bool CanUpdate();

    // From now on the rows are visited in the order of an index. The order is computed at once, or taken
    // unchanged if the index given to the pointer form has one. It does not follow later changes of the rows,
    // except deletions by this cursor. False, although that index is current then, for one over an unknown
    // field; for an unknown name if an index was current, which then is none; and for null if none is
    // current. An unknown name gives true if no index is current.
    virtual bool SetCurrentIndex(quillet::CString name);
    virtual bool SetCurrentIndex(const DbTableDescr::DbIndex* index);
    // Lower case; empty for none.
    virtual quillet::CString GetCurrentIndex() const;
    // Null where the cursor is at no row; valid until the row is deleted.
    virtual DbTableRow* GetCurrentRow() const;

    // Closes the cursor and goes over to another database, which may be null. The cursor's own database is
    // deleted.
    virtual void SetDatabase(DbDatabase* db);

    // The value of the current row in a field, by its position (from 0) or name. Throws outside the rows and
    // where there is no such field.
    virtual void GetFieldValue(uint64 index, quillet::CComVariant& value);
    virtual void GetFieldValue(quillet::CString name, quillet::CComVariant& value);
    virtual quillet::CComVariant GetFieldValue(quillet::CString name);
    quillet::CComVariant GetFieldValue(uint64 index);
    // Keeps the value for the next Update, which stores it as it is, whatever the type of the field. Throws
    // without a pending Edit or AddNew, and for an unknown name; a position without a field is ignored.
    virtual void SetFieldValue(uint64 index, quillet::CComVariant& value);
    virtual void SetFieldValue(quillet::CString name, quillet::CComVariant& value);
    void SetFieldValue(uint64 index, const quillet::CComVariant& value);
    void SetFieldValue(quillet::CString name, const quillet::CComVariant& value);
    // Null where there is no such field. It belongs to the table.
    virtual const DbFieldDescr* GetFieldInfo(uint64 index);
    virtual const DbFieldDescr* GetFieldInfo(quillet::CString name);

    // For derived classes: the file and the query that Open takes without others, and the place to bind
    // variables; it is called by every Open, once the table is there.
    virtual quillet::CString GetDefaultDBName();
    virtual quillet::CString GetDefaultSQL();
    virtual void InitFieldExchange();

    // Begins a new row, or a change of the current one; an edit that was pending is dropped. Update finishes
    // it; CancelUpdate and every move but SetAbsolutePosition and FindRow drop it. The rows are not touched
    // before.
    virtual void AddNew();
    virtual void Edit();
    // Deletes the current row and moves to the one before it, without reading it. Throws where CanUpdate is
    // false.
    virtual void Delete();
    // Appends the new row, or takes the one at the position in the table's own order, and stores first the
    // bound variables, then the values that were set. No index is current afterwards. Nothing is stored
    // without a pending edit. Throws where CanUpdate is false.
    virtual void Update();
    virtual void CancelUpdate();
    // Does nothing.
    virtual void Requery();

    // Writes the names of the fields and all rows in the table's own order, with "| " between the values, to
    // a file, which is replaced in one step, so that its folder has to take new files. What has no text form
    // is left out, line feeds become blanks. Only the first half of the text arrives, as UTF-16 in
    // little-endian order without a byte-order mark. Nothing happens where the file can't be written or the
    // cursor is closed.
    virtual void ExportCVS(quillet::CString path);

    // Searches the positions from (included) to (excluded forward, included backward). See Find, also for an
    // operator in front (Condition); a pending edit is kept.
    bool FindRow(const quillet::CString& where, uint64 from, uint64 to, eFindDirection direction);
    // The position in the table's own order of the row at a position; no row's position where the current
    // index has no such place.
    uint64 RemapRowIndex(uint64 i) const;
    // -1 for an unknown name.
    int GetFieldIndex(const quillet::CString& name) const;

    // Binds a variable to a field of the open table: every move to a row sets it, every Update stores it.
    // The variable must live until Close, SetDatabase or the end of the cursor. Values are converted as the
    // platform does; a value that can't be converted leaves the variable, or the field, as it was. Null reads
    // as zero, false or the empty text. Throws for an unknown name.
    void MapClassMember(quillet::CString name, short& variable);
    void MapClassMember(quillet::CString name, int& variable);
    // Only the low 32 bits of a long are stored.
    void MapClassMember(quillet::CString name, long& variable);
    void MapClassMember(quillet::CString name, quillet::CString& variable);
    void MapClassMember(quillet::CString name, float& variable);
    void MapClassMember(quillet::CString name, double& variable);
    void MapClassMember(quillet::CString name, bool& variable);
    // The same for any other variable, by two functions, each of which may be null.
    void MapClassMember(quillet::CString name, void* variable, ReadFunction read, WriteFunction write);

private:
    DbDatabase* Database() const;
    DbTableDescr* Descr() const { return m_descr ? *m_descr : nullptr; }
    DbTableData* Data() const { return m_data && Descr() != nullptr ? *m_data : nullptr; }
    uint64 RowCount() const { return Data() == nullptr ? 0 : Data()->size(); }

    // The database given, or the cursor's own; null once that is gone.
    DbDatabase* DatabaseToOpen();
    // The name of the table that a text asks for; false where there is none.
    using NameFunction = bool (*)(DbDatabase& database, const quillet::CString& text, quillet::CString& name);
    bool OpenBy(NameFunction nameOf, const quillet::CString& text);
    bool GoOverTo(NameFunction nameOf, const quillet::CString& text);
    // Forgets the table and whatever refers to it.
    void Release();

    // Sets the position, or the nearest possible one.
    void PlaceAt(std::int64_t position);
    bool MoveTo(std::int64_t position);
    DbTableRow* RowAt(std::int64_t position) const;
    bool ReadTableRow(std::int64_t position);
    // Moves to the row where the condition holds for it.
    bool TakeRow(quillet::RowCondition& condition, uint64 position);
    // The cell of the row at the position without regard to the current index.
    DbFieldValue& StoredCell(int field) const;
    uint64 FieldOrThrow(const quillet::CString& name, int line) const;

    // Whether a database was given or opened, dead or alive.
    bool m_hasDatabase = false;
    std::weak_ptr<DbDatabase*> m_database;
    std::unique_ptr<DbDatabase> m_ownDatabase;
    quillet::CString m_name;
    std::shared_ptr<DbTableData*> m_data;
    std::shared_ptr<DbTableDescr*> m_descr;
    std::int32_t m_position = 0;
    std::unique_ptr<quillet::CurrentIndex> m_index;
    std::unique_ptr<quillet::FieldBindings> m_bindings;
    std::unique_ptr<quillet::Bookmarks> m_bookmarks;
    std::unique_ptr<quillet::PendingEdit> m_edit;
    std::int32_t m_lastModified = 0;
};
