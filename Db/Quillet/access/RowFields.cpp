#include "Quillet/access/RowFields.h"

#include <algorithm>

namespace quillet::access {
namespace {

constexpr char TooShort[] = "the row is too short for its columns";
constexpr char OutOfOrder[] = "the row's columns overlap";

}  // namespace

const char* RowFields::Split(ByteView row) {
    const std::size_t head = m_layout.m_rowNumberSize;
    m_row = row;
    m_starts.clear();
    if (row.size() < head) {
        return TooShort;
    }
    m_columnCount = head == 1 ? row[0] : LittleU16(row, 0);
    if (m_columnCount == 0) {
        return "the row has no columns";
    }
    const std::size_t maskSize = (m_columnCount + BitsOfByte - 1) / BitsOfByte;
    if (row.size() < head + maskSize) {
        return TooShort;
    }
    m_mask = row.last(maskSize);
    m_fixedEnd = row.size() - maskSize;
    if (m_columnCount <= m_lowestVariableNumber) {
        return nullptr;
    }
    const char* const fault = m_layout.m_isJet3 ? FindStartsOfJet3() : FindStarts();
    if (fault == nullptr) {
        m_fixedEnd = m_starts.front();
    }
    return fault;
}

// Before the mask lies the number of variable columns, before that their starts, the first column's last, and
// before those the end of the last column.
const char* RowFields::FindStarts() {
    constexpr std::size_t NumberSize = 2;
    const std::size_t countPosition = m_row.size() - m_mask.size() - NumberSize;
    if (m_row.size() < m_mask.size() + m_layout.m_rowNumberSize + NumberSize) {
        return TooShort;
    }
    const std::size_t count = LittleU16(m_row, countPosition);
    const std::size_t tableSize = (count + 1) * NumberSize;
    if (countPosition < m_layout.m_rowNumberSize + tableSize) {
        return TooShort;
    }
    for (std::size_t i = 0; i <= count; ++i) {
        m_starts.push_back(LittleU16(m_row, countPosition - (i + 1) * NumberSize));
    }
    return CheckStarts(countPosition - tableSize);
}

// The same with numbers of one byte. Where the starts pass a multiple of 256, an entry of the jump table,
// which lies between the starts and the count, names the column.
const char* RowFields::FindStartsOfJet3() {
    constexpr std::size_t Jump = 256;
    const std::size_t trailer = m_mask.size() + 1;
    const std::size_t entries = (m_row.size() - 1) / Jump;
    if (m_row.size() < trailer + entries + m_layout.m_rowNumberSize + 1) {
        return TooShort;
    }
    const std::size_t countPosition = m_row.size() - trailer;
    const std::size_t count = m_row[countPosition];
    const std::size_t first = countPosition - entries - 1;
    if (first < count + m_layout.m_rowNumberSize) {
        return TooShort;
    }
    // The row's length tells how many entries there are. Those beyond the end of the data are none.
    const std::size_t jumps = std::min(entries, (first - count) / Jump);
    std::size_t used = 0;
    for (std::size_t i = 0; i <= count; ++i) {
        while (used < jumps && m_row[countPosition - used - 1] == i) {
            ++used;
        }
        m_starts.push_back(m_row[first - i] + Jump * used);
    }
    return CheckStarts(first - count);
}

// The columns lie in order between the row's beginning and the end of the room for them.
const char* RowFields::CheckStarts(std::size_t end) const {
    return m_starts.front() >= m_layout.m_rowNumberSize && m_starts.back() <= end &&
                   std::ranges::is_sorted(m_starts)
               ? nullptr
               : OutOfOrder;
}

std::optional<ByteView> RowFields::Fixed(std::size_t offset, std::size_t size) const {
    const std::size_t start = m_layout.m_rowNumberSize + offset;
    if (start + size > m_fixedEnd) {
        return std::nullopt;
    }
    return m_row.subspan(start, size);
}

std::optional<ByteView> RowFields::Variable(std::size_t index) const {
    if (index + 1 >= m_starts.size()) {
        return std::nullopt;
    }
    return m_row.subspan(m_starts[index], m_starts[index + 1] - m_starts[index]);
}

}  // namespace quillet::access
