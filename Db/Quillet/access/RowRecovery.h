// Two rows of a page whose common boundary the page's directory has lost.
#pragma once

#include <cstddef>
#include <optional>

#include "Quillet/access/DataPage.h"
#include "Quillet/access/RowFields.h"

namespace quillet::access {

// The directory says where each row begins; a row ends where the one before it begins. So a damaged entry
// hides the row itself and the end of the row after it, although the bytes of both are whole. They are found
// again if there is exactly one boundary at which both sides are rows.
class RowRecovery {
public:
    // The layout and the table's columns are those that the fields were made for, and the fixed part of a row
    // has at least that size.
    RowRecovery(const RowFields& fields, std::size_t fixedSize) : m_fields(fields), m_fixedSize(fixedSize) {}

    // Looks for the boundary between the row, whose entry is damaged, and the one after it. Both must be
    // plain rows. It takes a time that is proportional to the page.
    void Search(const DataPage& page, std::size_t row);
    // The row as it was found; nullopt if it is neither of the two.
    std::optional<DataPage::Row> Find(std::size_t row) const;

private:
    bool IsRow(ByteView bytes);

    RowFields m_fields;
    std::size_t m_fixedSize;
    bool m_isFound = false;
    std::size_t m_row = 0;
    ByteView m_bytes;
    ByteView m_nextBytes;
};

}  // namespace quillet::access
