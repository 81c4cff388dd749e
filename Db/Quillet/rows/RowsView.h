// Rows that are read, and filled, without being made.
#pragma once

#include <algorithm>
#include <cstddef>
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
    // Rows from a visible position on that follow one another in columns; none where the row has an object.
    ColumnStore::Run RunAt(uint64 position) const {
        ColumnStore::Run run = m_store.RunAt(m_order[position], m_order.size() - position);
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
    // The same for a copy: what a cell stores, whatever its class says that it is.
    CellView StoredCell(uint64 position, uint64 field) const {
        return m_store.CellAt<ColumnStore::Reading::Stored>(m_order[position], field);
    }
    // Gives a cell a value and a flag without a stamp.
    void SetCell(uint64 position, uint64 field, const CellView& value) {
        m_store.SetCell(m_order[position], field, value);
    }

private:
    const std::vector<uint64>& m_order;
    ColumnStore& m_store;
};

// A list of rows, whose cells are read.
class RowSelection {
public:
    // Row objects; none is null.
    RowSelection(std::span<DbTableRow* const> rows) : m_rows(rows), m_size(rows.size()) {}
    // Rows of a table by their visible positions. Where there is no row, its cells are empty.
    RowSelection(const RowsView& view, std::span<const uint64> positions)
        : m_view(&view), m_positions(positions), m_size(positions.size()) {}

    std::size_t Size() const { return m_size; }
    // A cell, empty where the row has none.
    CellView Cell(std::size_t row, uint64 field) const {
        if (m_view == nullptr) {
            return ColumnStore::CellOf(*m_rows[row], field);
        }
        const uint64 position = m_positions[row];
        return m_view->HasRow(position) ? m_view->Cell(position, field) : CellView();
    }

private:
    const RowsView* m_view = nullptr;
    std::span<DbTableRow* const> m_rows;
    std::span<const uint64> m_positions;
    std::size_t m_size;
};

}  // namespace quillet
