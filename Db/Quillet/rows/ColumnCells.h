// The values of one field of many rows, in place in their columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "Quillet/rows/RowsView.h"

namespace quillet {

// Reads cells whose columns are of the most usual kind; Value is double, float, LONG, SHORT or, for texts,
// std::string_view. Valid as long as the selection; no row may be made meanwhile.
template <typename Value>
class ColumnCells {
public:
    // None is in place.
    ColumnCells() = default;
    ColumnCells(const RowSelection& rows, uint64 field, CellView::Kind kind)
        : m_slots(rows.Slots()), m_field(field) {
        const ColumnStore* const store = rows.Store();
        if (store == nullptr) {
            return;
        }
        m_parts.resize(store->BlockCount());
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            const ColumnBlock* const block = store->BlockAt(i);
            if (block != nullptr && field < block->Columns() && block->KindOf(field) == kind &&
                block->HoldsValues(field, block->Used())) {
                m_parts[i] = {block, block->NumbersOf<Number>(field), block->HasRows()};
            }
        }
    }

    // Nothing where the cell has to be read by itself: it is no value of the kind, or the row has an object.
    std::optional<Value> At(std::size_t row) const {
        if (m_parts.empty()) {
            return std::nullopt;
        }
        const std::uint32_t slot = m_slots[row];
        const std::size_t number = ColumnStore::BlockNumberOf(slot);
        if (number >= m_parts.size()) {
            return std::nullopt;
        }
        const Part& part = m_parts[number];
        const std::uint32_t within = ColumnStore::WithinBlock(slot);
        if (part.m_block == nullptr || (part.m_hasRows && part.m_block->RowAt(within) != nullptr)) {
            return std::nullopt;
        }
        if constexpr (IsText) {
            return part.m_block->TextAt(m_field, within);
        } else {
            return part.m_numbers[within];
        }
    }

private:
    static constexpr bool IsText = std::is_same_v<Value, std::string_view>;
    using Number = std::conditional_t<IsText, std::byte, Value>;

    // What is read of a block; null where its column is none of the kind, or holds more than values.
    struct Part {
        const ColumnBlock* m_block = nullptr;
        const Number* m_numbers = nullptr;
        // Some rows may have objects.
        bool m_hasRows = false;
    };

    std::span<const std::uint32_t> m_slots;
    std::size_t m_field = 0;
    std::vector<Part> m_parts;
};

// The kind of a field's columns in a selection: that of the first block that has the field.
inline CellView::Kind ColumnKindOf(const RowSelection& rows, uint64 field) {
    const ColumnStore* const store = rows.Store();
    for (std::size_t i = 0; store != nullptr && i < store->BlockCount(); ++i) {
        const ColumnBlock* const block = store->BlockAt(i);
        if (block != nullptr && field < block->Columns()) {
            return block->KindOf(field);
        }
    }
    return CellView::Kind::Empty;
}

// Calls use with the cells of the field as its columns keep them. Where they are of no kind that columns
// hold, none of them is in place.
template <typename Use>
void WithColumnCells(const RowSelection& rows, uint64 field, Use use) {
    const CellView::Kind kind = ColumnKindOf(rows, field);
    switch (kind) {
        case CellView::Kind::Double:
            return use(ColumnCells<double>(rows, field, kind), kind);
        case CellView::Kind::Float:
            return use(ColumnCells<float>(rows, field, kind), kind);
        case CellView::Kind::Short:
        case CellView::Kind::Boolean:
            return use(ColumnCells<SHORT>(rows, field, kind), kind);
        case CellView::Kind::Text:
            return use(ColumnCells<std::string_view>(rows, field, kind), kind);
        default:
            return use(ColumnCells<LONG>(rows, field, kind), kind);
    }
}

}  // namespace quillet
