#include "Quillet/rows/NewCells.h"

#include "Quillet/Db_TableDescr.h"
#include "Quillet/rows/ColumnStore.h"

namespace quillet {

NewCells::NewCells(DbRows& rows, uint64 fieldIndex) : m_rows(rows), m_index(fieldIndex) {
    const DbTableDescr* const descr = rows.Descr();
    if (descr == nullptr) {
        return;
    }
    rows.PrepareFieldChange();
    m_hasColumns = rows.m_storage->IsOwnedBy(rows) && rows.m_storage->Descr() == descr;
    if (m_hasColumns) {
        rows.m_storage->MakeColumns(fieldIndex, *descr);
    }
    const DbFieldDescr& field = descr->GetField(static_cast<int>(fieldIndex));
    rows.m_storage->ForEachMade(0, [&](DbTableRow& row) {
        if (rows.Follows(row)) {
            m_cells.emplace_back(&row, row.MakeCell(fieldIndex, field));
        }
    });
}

void NewCells::Insert() {
    if (m_hasColumns) {
        m_rows.m_storage->InsertColumns(m_index);
    }
    for (auto& [row, cell] : m_cells) {
        row->InsertCell(m_index, std::move(cell));
    }
    // Even without rows, answers computed from them have to follow.
    if (m_rows.Descr() != nullptr) {
        m_rows.SetChanged();
    }
}

}  // namespace quillet
