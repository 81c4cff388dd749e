// The contents of one table.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Quillet/Db_ColumnView.h"
#include "Quillet/Db_Rows.h"
#include "Quillet/Db_TableDescr.h"

class DbDatabase;
class DbTableInfo;
struct DbLogEntry;

namespace quillet {
struct ScannedRows;
class Upcalls;
class DocumentReader;
class QueryBuilder;
}  // namespace quillet

// The rows of a table, and until their first use the XML text that they will be read from. The members that
// say so read that text; the others see only the rows that are there.
class QUILLET_API DbTableData : public DbXmlSerializable, public DbItem {
public:
    // An empty table with the given structure, which is not owned; the database becomes the parent.
    DbTableData(DbDatabase* db, DbTableDescr* descr);
    DbTableData(const DbTableData&) = delete;
    DbTableData& operator=(const DbTableData&) = delete;
    ~DbTableData() override;

    // Reads the pending text; then appends one <row> for each row in visible order. False, with a line in the
    // database's log, when a row fails; false when the text can't be read. What a document object model
    // throws is a failure too; nothing is thrown but our own std::bad_alloc. The same for
    // Load.
    bool Save(IDispatch* document, IDispatch* parentElement) override;
    // Appends one row for each child of the element and logs the time that it took. A row that fails ends the
    // load with false. Out of memory std::bad_alloc is thrown, and no row is appended.
    bool Load(IDispatch* element) override;
    // Deletes all rows and the pending text; rows that are still in the database's file don't come back.
    virtual void Clear();
    // Takes the text of a <table> element to be read when the rows are first needed.
    virtual void SetXmlSource(const quillet::CString& xml);

    uint64 GetSize() const override;

    // Reads the pending text. True where nothing is pending or the text was read: its rows then count as
    // unchanged, and what was changed before, such as rows that were added, still counts as changed. False if
    // it can't be read, also when out of memory; it stays pending and no row is added.
    bool ParseXmlData();
    // Whether data was ever given, by SetXmlSource or Load.
    bool IsInitialized() const { return m_initialized; }

    // The number of rows; reads the pending text, and 0 where that fails. The same for the accessors below.
    uint64 size();
    // The rows; valid until Clear.
    DbRows* GetRows();
    // The row at a visible position. Where there is none, a row without cells that belongs to nobody.
    DbTableRow& operator[](uint64 pos);
    // Null where there is none.
    DbTableRow* GetRow(int pos);
    // The cells as they are now, column by column: a column for each field.
    DbColumnView GetColumns();
    // How many rows a condition holds for: the part of a query after WHERE, such as "a > 5 and b = 'x'"
    // (docs/query-language.md); an empty text holds for every row. No row gets an object, and no answer is
    // made. -1 for a text that is no condition, as the log of the database says, for rows that can't be read,
    // and for contents that belong to no database.
    std::int64_t CountWhere(const quillet::CString& condition);
    // Ignored where there is none.
    void DeleteRow(uint64 pos);
    void Bind(DbRows* other, std::vector<uint64>& order);

    // Appends rows with the fields' default values and returns the position of the first. Does not read the
    // pending text: use a reading accessor first, or the new rows come before those of the text.
    uint64 AddRow();
    uint64 AddRows(uint64 n);
    // See DbRows::Update. Does not read the pending text.
    void Update(uint64 fieldIndex, bool added);

    // Null once the structure is gone.
    DbTableDescr* GetTableDescr() const { return m_descr ? *m_descr : nullptr; }

    // Binary search. fields are positions of fields; order lists visible positions in ascending order of
    // those fields. The result is the place in the order of an equal row, not necessarily the first one, or
    // the place where such a row would be inserted. An empty order gives 0.
    uint64 SpatialIndex(std::vector<uint64>& fields, std::vector<uint64>& order, DbTableRow& key);
    // An empty order means all rows in their visible order.
    uint64 SpatialIndex(std::vector<uint64>& fields, std::vector<uint64>& order,
                        std::vector<quillet::CComVariant>& key);
    // Searches in the row order that the index keeps, or in all rows in their visible order. The key holds
    // one value for each field of the index; pos receives the place. The result is that of the last
    // comparison, and CmpEqual, with the place 0, where nothing was compared: there are no rows, or the index
    // lost a field.
    DbTableRow::eCmpResult SpatialIndex(DbTableDescr::DbIndex* index, const quillet::CComVariant* key,
                                        int count, uint64& pos);

    // Points to this object as long as it lives, and to null afterwards.
    const std::shared_ptr<DbTableData*>& LifeToken() const { return m_life; }

private:
    friend class DbRecordset;
    friend class DbRows;
    friend class DbTableInfo;
    friend class DbTableRow;
    friend class quillet::Upcalls;
    friend class quillet::DocumentReader;
    friend class quillet::QueryBuilder;

    // Removes the row at a position again, if AddRow put it there and nothing was added since.
    void TakeBackRow(uint64 pos) { m_rows->TakeBackRow(pos); }
    // After this the next Clear can't fail.
    void PrepareClear();

    // What GetChangeId says. It walks over the cells only where a stamp in the process came or went since it
    // was last asked.
    long LatestStamp();
    // Whether none did.
    bool IsLatestStampKnown() const { return m_movesWhenFound == StampMoves(); }
    // The changes were made elsewhere: the stamp that is known still holds.
    void ConfirmLatestStamp() { m_movesWhenFound = StampMoves(); }

    // Rows are about to come from elsewhere.
    void DropXmlSource();
    // Whether TakeRows does what Load would.
    bool CanTakeRows() const;
    // As Load, for rows that were read without the document.
    void TakeRows(const quillet::ScannedRows& rows);
    void LogRowsRead(uint64 rows, double seconds);
    bool LoadRows(IDispatch* element);
    // Takes away the rows that read() appended where it throws.
    template <typename Read>
    bool ReadWholly(Read read);
    void LogToDatabase(const DbLogEntry& entry);
    quillet::CString TableName() const;
    void NoteMisfit();
    void LogMisfits();

    std::shared_ptr<DbTableData*> m_life = std::make_shared<DbTableData*>(this);
    std::unique_ptr<DbRows> m_rows;
    // What the next Clear puts in their place; null if it has to be made.
    std::unique_ptr<DbRows> m_nextRows;
    quillet::CString m_xmlSource;
    bool m_pending = false;
    bool m_initialized = false;
    std::shared_ptr<DbTableDescr*> m_descr;
    // While rows are read: the number of the current row, from 1, and of the first whose number of values is
    // not that of the table's fields, and how many there were.
    uint64 m_loadingRow = 0;
    uint64 m_firstMisfit = 0;
    uint64 m_misfits = 0;
    long m_latestStamp = 0;
    // The count of StampMoves when it was found.
    std::optional<std::uint64_t> m_movesWhenFound;
};
