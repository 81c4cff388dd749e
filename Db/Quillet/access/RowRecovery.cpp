#include "Quillet/access/RowRecovery.h"

namespace quillet::access {

void RowRecovery::Search(const DataPage& page, std::size_t row) {
    m_isFound = false;
    const std::optional<ByteView> both = page.BytesAround(row);
    if (!both) {
        return;
    }
    std::size_t found = 0;
    for (std::size_t boundary = 1; boundary < both->size(); ++boundary) {
        if (IsRow(both->subspan(boundary)) && IsRow(both->first(boundary))) {
            m_bytes = both->subspan(boundary);
            m_nextBytes = both->first(boundary);
            ++found;
        }
    }
    m_row = row;
    m_isFound = found == 1;
}

bool RowRecovery::IsRow(ByteView bytes) {
    return m_fields.Split(bytes) == nullptr && m_fields.FixedSize() >= m_fixedSize;
}

std::optional<DataPage::Row> RowRecovery::Find(std::size_t row) const {
    if (!m_isFound || (row != m_row && row != m_row + 1)) {
        return std::nullopt;
    }
    return DataPage::Row{false, false, false, row == m_row ? m_bytes : m_nextBytes};
}

}  // namespace quillet::access
