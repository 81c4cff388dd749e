// A row's bytes, split into its columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/Layout.h"

namespace quillet::access {

class RowFields {
public:
    // A row has a variable part if one of its columns is variable. Of its columns, those of the table that
    // are variable have this number or a higher one.
    RowFields(const Layout& layout, std::size_t lowestVariableNumber)
        : m_layout(layout), m_lowestVariableNumber(lowestVariableNumber) {}

    // Splits another row, whose bytes must stay as long as its columns are asked for. Returns what is wrong
    // with the row; null if nothing is.
    const char* Split(ByteView row);

    // Whether the row has the column of that number, and its bit in the null mask is set. A column that was
    // added to the table later is not in the row.
    bool HasBit(std::size_t number) const { return number < m_columnCount && BitOf(m_mask, number); }

    // The size of the part of fixed columns.
    std::size_t FixedSize() const { return m_fixedEnd - m_layout.m_rowNumberSize; }

    // The bytes of a column; nullopt if they don't lie in its part of the row.
    std::optional<ByteView> Fixed(std::size_t offset, std::size_t size) const;
    std::optional<ByteView> Variable(std::size_t index) const;

private:
    const char* FindStarts();
    const char* FindStartsOfJet3();
    const char* CheckStarts(std::size_t end) const;

    const Layout& m_layout;
    std::size_t m_lowestVariableNumber;
    ByteView m_row;
    ByteView m_mask;
    std::size_t m_columnCount = 0;
    std::size_t m_fixedEnd = 0;
    // Of the variable columns, and the end of the last one.
    std::vector<std::size_t> m_starts;
};

}  // namespace quillet::access
