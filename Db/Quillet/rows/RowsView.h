// Rows that are read, and filled, without being made.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Quillet/Db_Rows.h"
#include "Quillet/rows/ColumnStore.h"

namespace quillet {

// The visible rows of a table, by their positions. Valid as long as the table shows the same rows.
class RowsView {
public:
    explicit RowsView(DbRows& rows) : m_order(rows.m_order), m_store(*rows.m_storage) {}

    uint64 Count() const { return m_order.size(); }
    bool HasRow(uint64 position) const {
        return position < m_order.size() && m_order[position] < m_store.Size();
    }
    // How many cells the row has, which must exist; the same for the members that follow.
    std::size_t Width(uint64 position) const { return m_store.WidthOf(m_order[position]); }
    // Null if the row was not made.
    DbTableRow* MadeRow(uint64 position) const { return m_store.MadeRowAt(m_order[position]); }
    // The slot of the row in the store.
    std::uint32_t SlotOf(uint64 position) const { return m_store.SlotOf(m_order[position]); }
    ColumnStore& Store() const { return m_store; }
    // Rows from a visible position on that follow one another in columns, no more than asked for; none where
    // the row has an object.
    ColumnStore::Run RunAt(uint64 position, std::size_t most = SIZE_MAX) const {
        ColumnStore::Run run = m_store.RunAt(m_order[position], std::min(most, m_order.size() - position));
        std::uint32_t rows = std::min(run.m_rows, 1U);
        while (rows < run.m_rows && m_order[position + rows] == m_order[position] + rows) {
            ++rows;
        }
        run.m_rows = rows;
        return run;
    }
    // The block of the row, for whoever keeps it: the rows that it holds now stay in it.
    std::shared_ptr<const ColumnBlock> ShareBlockOf(uint64 position) const {
        return m_store.ShareBlockOf(m_order[position]);
    }
    // The structure of the rows that were not made; null once it is gone.
    const DbTableDescr* Descr() const { return m_store.Descr(); }
    bool HasMadeRows() const { return m_store.HasMadeRows(); }
    // A cell, empty where the row has none.
    CellView Cell(uint64 position, uint64 field) const { return m_store.CellAt(m_order[position], field); }
    // Gives a cell a value and a flag without a stamp.
    void SetCell(uint64 position, uint64 field, const CellView& value) {
        m_store.SetCell(m_order[position], field, value);
    }

private:
    const std::vector<uint64>& m_order;
    ColumnStore& m_store;
};

// A list of rows, whose cells are read. Valid as long as their tables show the same rows.
class RowSelection {
public:
    using Reading = ColumnStore::Reading;

    // Row objects; none is null.
    RowSelection(std::span<DbTableRow* const> rows) : m_rows(rows), m_size(rows.size()) {}
    // Rows of a table by their visible positions. Where there is no row, its cells are empty.
    RowSelection(const RowsView& view, std::span<const uint64> positions)
        : m_store(&view.Store()), m_slots(positions.size()), m_size(positions.size()) {
        std::transform(positions.begin(), positions.end(), m_slots.begin(), [&](uint64 position) {
            return view.HasRow(position) ? view.SlotOf(position) : NoSlot;
        });
    }

    std::size_t Size() const { return m_size; }
    // A cell, empty where the row has none.
    template <Reading How = Reading::Virtual>
    CellView Cell(std::size_t row, uint64 field) const {
        if (m_store == nullptr) {
            return How == Reading::Virtual ? ColumnStore::CellOf(*m_rows[row], field)
                                           : ColumnStore::StoredCellOf(*m_rows[row], field);
        }
        const std::uint32_t slot = m_slots[row];
        return slot == NoSlot ? CellView() : m_store->CellInSlot<How>(slot, field);
    }

    // In place of a slot: there is no such row. It is the last of more slots than memory holds.
    static constexpr std::uint32_t NoSlot = UINT32_MAX;
    // The slots of the rows in their store; there is none for row objects.
    std::span<const std::uint32_t> Slots() const { return m_slots; }
    const ColumnStore* Store() const { return m_store; }

private:
    const ColumnStore* m_store = nullptr;
    std::vector<std::uint32_t> m_slots;
    std::span<DbTableRow* const> m_rows;
    std::size_t m_size;
};

}  // namespace quillet
