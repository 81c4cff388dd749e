// The rows of a table, or a selection and ordering of another table's rows.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Quillet/Db_TableRow.h"

struct DbLogEntry;

namespace quillet {
class CellParser;
class ColumnStore;
class NewCells;
class RowsView;
class Upcalls;
namespace xml {
class Node;
}
}  // namespace quillet

// Rows are seen through an order of storage positions: the visible row i is storage[order[i]]. Bound rows
// share the storage of the rows that they are bound to; the storage, and the rows in it, live as long as
// anyone shares it.
class QUILLET_API DbRows : public DbItem {
public:
    DbRows(DbItem* parent, DbTableDescr* descr);
    DbRows(const DbRows&) = delete;
    DbRows& operator=(const DbRows&) = delete;
    ~DbRows() override;

    long GetChangeId() override;
    uint64 GetSize() const override;
    uint64 CalcSize() override;

    // Members throw only std::bad_alloc, and leave the rows unchanged then.

    // Appends a row with one cell for each field, empty or with the field's default value, and returns its
    // visible position. A row added to bound rows belongs to the rows bound to and is seen in both.
    uint64 AddRow(bool initValues);
    // Appends n rows and returns the position of the first. Appends none if there would be more rows than
    // positions, which are signed 32-bit numbers.
    uint64 AddRows(uint64 n, bool initValues);
    // Deletes the row at a visible position; ignored where there is none. In the order, and in that of the
    // rows bound to, the entry equal to the position disappears and those above it are lowered by one.
    void DeleteRow(uint64 pos);
    // A field was added to the descriptor or removed from it: its cells are inserted with the field's default
    // value, or deleted, in every row that follows the descriptor.
    void Update(uint64 fieldIndex, bool added);

    // From now on shows other's rows in the given order of storage positions. Its own rows are dropped. No
    // effect for null or itself. Nothing counts as changed by that.
    void Bind(DbRows* other, std::vector<uint64>& order);
    bool IsBinded() const { return m_isBound; }
    // The rows whose storage these show: those bound to, or these themselves.
    DbRows* GetLender();

    // The visible row at a position; null where there is none, or where its order entry points at nothing.
    DbTableRow* GetRow(int pos);
    // The last visible row; null where there is none.
    DbTableRow* GetLastRow();
    uint64 GetRowsCount() const { return m_order.size(); }
    // The storage position of the row at a visible position; the position itself if there is none.
    uint64 GetStoragePosition(uint64 pos) const { return pos < m_order.size() ? m_order[pos] : pos; }

    // Points to the visible row at a position as long as the row lives, wherever it moves, and to null
    // afterwards. Null if there is no row.
    std::shared_ptr<DbTableRow*> LifeTokenOf(int pos);

private:
    friend class DbColumnView;
    friend class DbTableData;
    friend class DbTableRow;
    friend class quillet::NewCells;
    friend class quillet::RowsView;
    friend class quillet::Upcalls;

    // Leaves rows from a visible position on with the document, to be written later as they are now. How
    // many; none where the row has to be saved by itself.
    uint64 SaveColumns(uint64 pos, const quillet::xml::Node& document,
                       const quillet::xml::Node& parentElement);
    // Appends the row at a visible position, if there is one, as DbTableRow::Save does.
    bool SaveRow(uint64 pos, IDispatch* document, IDispatch* parentElement);
    // Reads the row at a visible position, as DbTableRow::Load does; false if there is none.
    bool LoadRow(uint64 pos, const quillet::xml::Node& node, quillet::CellParser& parser);
    bool LoadUnmadeRow(uint64 pos, const quillet::xml::Node& node, quillet::CellParser& parser);
    // Whether there are no rows, and nobody else shares the storage.
    bool CanTakeRows() const;
    // Shows the rows, which have no owner yet, as if they had been added.
    void TakeRows(const std::shared_ptr<quillet::ColumnStore>& rows);
    // Deletes the visible rows from a position on, which are the last ones of the storage.
    void Truncate(uint64 count);

    // Whether the row's cells follow the descriptor by way of these rows.
    bool Follows(const DbTableRow& row) const;
    void PrepareFieldChange();
    void EraseCells(uint64 fieldIndex);
    // Removes the row at a visible position again, if it is the one that was appended last.
    void TakeBackRow(uint64 pos);

    DbRows* BoundTo() const;
    uint64 AppendRows(uint64 n, bool initValues);
    void RemoveFromOrder(uint64 pos);
    void LogToDatabase(const DbLogEntry& entry);
    // Counted from 1 in the visible order; 0 for a row that is not among these. Looks at one row after
    // another.
    uint64 NumberOf(const DbTableRow& row) const;
    void NoteMisfit();

    DbTableDescr* Descr() const { return m_descr ? *m_descr : nullptr; }
    // Whether there is a row at a visible position.
    bool HasRow(uint64 pos) const;
    // How many rows that were not made have these rows for their parent.
    uint64 UnmadeRows() const;

    // The structure that the rows follow; points to null once that is gone.
    std::shared_ptr<DbTableDescr*> m_descr;
    std::vector<uint64> m_order;
    std::shared_ptr<quillet::ColumnStore> m_storage;
    // Points to this object as long as it lives.
    std::shared_ptr<DbRows*> m_self;
    std::weak_ptr<DbRows*> m_boundTo;
    bool m_isBound = false;
};
