// The cells of one field as numbers that compare as the cells do.
#pragma once

#include <cstdint>
#include <vector>

#include "Quillet/rows/CellComparison.h"
#include "Quillet/rows/ColumnCells.h"
#include "Quillet/rows/RowsView.h"

namespace quillet {

// Reads every cell once and sorts what is of the field's commonest type. Rows are named by their numbers.
class OrderColumn {
public:
    // The rows must outlive the column.
    OrderColumn(const RowSelection& rows, uint64 field);

    // Whether the comparison is a consistent order of these cells. Equal cells then have equal ranks, and the
    // greater cell the greater rank; ranks count from 0 without gaps.
    bool IsConsistent() const { return m_isConsistent; }
    const std::vector<std::uint32_t>& Ranks() const { return m_ranks; }
    std::uint32_t RankCount() const { return m_rankCount; }
    // The rows in ascending order of their ranks, those of one rank in their own order; empty where that is
    // not known yet.
    const std::vector<std::uint32_t>& Sorted() const { return m_sorted; }

    // What DbTableRow::CompareEx says of this field.
    DbTableRow::eCmpResult Compare(std::uint32_t left, std::uint32_t right) const {
        const std::uint32_t leftRank = m_ranks[left];
        const std::uint32_t rightRank = m_ranks[right];
        if (leftRank == Other || rightRank == Other) {
            CComVariant ofLeft;
            CComVariant ofRight;
            return CompareCells(m_rows->Cell(left, m_field).In(ofLeft),
                                m_rows->Cell(right, m_field).In(ofRight));
        }
        const std::vector<std::uint32_t>& values = m_isConsistent ? m_ranks : m_values;
        if (values[left] == values[right]) {
            return DbTableRow::CmpEqual;
        }
        const bool isGreater = leftRank > rightRank && leftRank != Null;
        return isGreater ? DbTableRow::CmpGreater : DbTableRow::CmpLess;
    }

private:
    // The rank and the value of a null, which is neither less nor greater than any.
    static constexpr std::uint32_t Null = UINT32_MAX;
    // The rank of a cell that is compared itself.
    static constexpr std::uint32_t Other = UINT32_MAX - 1;
    // The value of an empty cell beside zeros, which have its rank and don't equal it.
    static constexpr std::uint32_t EmptyValue = UINT32_MAX - 2;

    // A cell that is not read in place.
    struct OtherCell {
        std::uint32_t m_row;
        CellView m_cell;
    };
    using OtherCells = std::vector<OtherCell>;

    template <typename Value>
    void Rank(const ColumnCells<Value>& cells, VARTYPE typeInPlace);
    // All cells, of which these are read already.
    OtherCells All(const OtherCells& read) const;
    template <typename Number>
    void RankNumbers(const ColumnCells<Number>& cells, const OtherCells& others, VARTYPE type);
    void RankTexts(const ColumnCells<std::string_view>& cells, const OtherCells& others);

    const RowSelection* m_rows;
    uint64 m_field;
    std::vector<std::uint32_t> m_ranks;
    // The same for equal cells, and only for them; empty where the ranks are, since the order is consistent.
    std::vector<std::uint32_t> m_values;
    std::vector<std::uint32_t> m_sorted;
    std::uint32_t m_rankCount = 0;
    bool m_isConsistent = true;
};

}  // namespace quillet
