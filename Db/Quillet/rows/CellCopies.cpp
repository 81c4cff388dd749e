// Values of a column go straight to the new rows' column, anything else cell by cell.
#include "Quillet/rows/CellCopies.h"

#include <algorithm>
#include <memory>

#include "Quillet/rows/ColumnCells.h"

namespace quillet {

namespace {

using Reading = RowSelection::Reading;

class FieldCopies {
public:
    FieldCopies() = default;
    FieldCopies(const FieldCopies&) = delete;
    FieldCopies& operator=(const FieldCopies&) = delete;
    virtual ~FieldCopies() = default;
    // The cells of the rows from first to end, by their numbers in the selection.
    virtual void Copy(std::size_t first, std::size_t end) = 0;
};

template <typename Value>
class FieldCopiesOf : public FieldCopies {
public:
    FieldCopiesOf(const RowSelection& from, uint64 field, ColumnCells<Value> cells, CellView::Kind kind,
                  RowsView& to, uint64 position, uint64 toField)
        : m_from(from),
          m_field(field),
          m_cells(std::move(cells)),
          m_kind(kind),
          m_to(to),
          m_position(position),
          m_toField(toField) {}

    void Copy(std::size_t first, std::size_t end) override {
        while (first < end) {
            const ColumnStore::Run run = m_to.RunAt(m_position + first, end - first);
            const std::size_t rows = std::max(run.m_rows, 1U);
            if (run.m_rows > 0 && m_toField < run.m_block->Columns() &&
                run.m_block->KindOf(m_toField) == m_kind) {
                const std::uint32_t slot = m_to.SlotOf(m_position + first);
                FillColumn(*m_to.Store().BlockAt(ColumnStore::BlockNumberOf(slot)), run.m_slot, first,
                           first + rows);
            } else {
                for (std::size_t row = first; row < first + rows; ++row) {
                    CopyCell(row);
                }
            }
            first += rows;
        }
    }

private:
    void CopyCell(std::size_t row) {
        m_to.SetCell(m_position + row, m_toField, m_from.Cell<Reading::Stored>(row, m_field));
    }

    void FillColumn(ColumnBlock& block, std::uint32_t slot, std::size_t first, std::size_t end) {
        // The values from here on are not counted yet.
        std::uint32_t uncounted = slot;
        for (std::size_t row = first; row < end; ++row, ++slot) {
            const std::optional<Value> value = m_cells.At(row);
            if (value && Put(block, slot, *value)) {
                continue;
            }
            block.FillColumn(m_toField, uncounted, slot);
            uncounted = slot + 1;
            if (!block.Put(m_toField, slot, m_from.Cell<Reading::Stored>(row, m_field))) {
                // The row becomes an object.
                CopyCell(row);
            }
        }
        block.FillColumn(m_toField, uncounted, slot);
    }

    bool Put(ColumnBlock& block, std::uint32_t slot, Value value) {
        if constexpr (std::is_same_v<Value, std::string_view>) {
            return block.AddText(m_toField, slot, value);
        } else {
            block.NumbersOf<Value>(m_toField)[slot] = value;
            return true;
        }
    }

    const RowSelection& m_from;
    uint64 m_field;
    ColumnCells<Value> m_cells;
    CellView::Kind m_kind;
    RowsView& m_to;
    uint64 m_position;
    uint64 m_toField;
};

}  // namespace

void CopyCells(const RowSelection& from, const std::vector<uint64>& fields, RowsView& to, uint64 position,
               uint64 toField) {
    // The cells of one row object lie together, and so do those of one column.
    constexpr std::size_t ObjectsAtATime = 512;
    std::vector<std::unique_ptr<FieldCopies>> copies;
    for (const uint64 field : fields) {
        WithColumnCells(from, field, [&]<typename Value>(ColumnCells<Value> cells, CellView::Kind kind) {
            copies.push_back(std::make_unique<FieldCopiesOf<Value>>(from, field, std::move(cells), kind, to,
                                                                    position, toField));
        });
        ++toField;
    }
    const bool hasObjects = from.Store() == nullptr || from.Store()->HasMadeRows();
    const std::size_t atATime = hasObjects ? ObjectsAtATime : std::max<std::size_t>(from.Size(), 1);
    for (std::size_t first = 0; first < from.Size(); first += atATime) {
        const std::size_t end = std::min(first + atATime, from.Size());
        for (const std::unique_ptr<FieldCopies>& field : copies) {
            field->Copy(first, end);
        }
    }
}

}  // namespace quillet
