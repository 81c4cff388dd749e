#include "Quillet/access/DataPage.h"

#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

constexpr std::size_t EntrySize = 2;
constexpr std::size_t PositionBits = 0x1FFF;
constexpr std::size_t MovedFlag = 0x4000;
constexpr std::size_t MovedHereFlag = 0x8000;
// A pointer has one byte for the row.
constexpr std::size_t MostRows = 256;

}  // namespace

DataPage::DataPage(Page page, const Layout& layout) : m_page(std::move(page)), m_layout(&layout) {
    if (!m_page.Is(ePageType::Data)) {
        throw DamagedPlace(m_page.Number(), 0, "the page is no data page");
    }
    m_rowCount = m_page.U16(layout.m_rowCount);
    m_isCountWrong = m_rowCount > MostRows || DirectoryEnd(m_rowCount) > layout.m_pageSize;
    if (m_isCountWrong) {
        m_rowCount = RowsFound();
    }
}

std::size_t DataPage::DirectoryEnd(std::size_t rows) const {
    return m_layout->m_rowStarts + rows * EntrySize;
}

std::size_t DataPage::Entry(std::size_t row) const {
    return m_page.U16(DirectoryEnd(row));
}

// How many rows lie one below the other, each between the row before and the directory up to itself.
std::size_t DataPage::RowsFound() const {
    std::size_t row = 0;
    std::size_t end = m_layout->m_pageSize;
    while (row < MostRows && DirectoryEnd(row + 1) <= end) {
        const std::size_t start = Entry(row) & PositionBits;
        if (start < DirectoryEnd(row + 1) || start > end) {
            break;
        }
        end = start;
        ++row;
    }
    return row;
}

DataPage::Row DataPage::RowAt(std::size_t row) const {
    if (row >= m_rowCount) {
        throw DamagedPage(m_page.Number(), "the page has no row " + std::to_string(row));
    }
    const std::size_t entry = Entry(row);
    const std::size_t start = entry & PositionBits;
    const std::size_t end = row == 0 ? m_layout->m_pageSize : Entry(row - 1) & PositionBits;
    if (start < DirectoryEnd(m_rowCount) || start > end || end > m_layout->m_pageSize) {
        throw DamagedPlace(m_page.Number(), DirectoryEnd(row),
                           "row " + std::to_string(row) + " lies outside of the page's rows");
    }
    const bool moved = (entry & MovedFlag) != 0;
    const bool movedHere = (entry & MovedHereFlag) != 0;
    return {moved && !movedHere, movedHere && !moved, moved && movedHere,
            m_page.Bytes().subspan(start, end - start)};
}

std::optional<ByteView> DataPage::BytesAround(std::size_t row) const {
    const auto isPlain = [&](std::size_t other) { return (Entry(other) & ~PositionBits) == 0; };
    if (row + 1 >= m_rowCount || !isPlain(row) || !isPlain(row + 1)) {
        return std::nullopt;
    }
    const std::size_t start = Entry(row + 1) & PositionBits;
    const std::size_t end = row == 0 ? m_layout->m_pageSize : Entry(row - 1) & PositionBits;
    if (start < DirectoryEnd(m_rowCount) || start > end || end > m_layout->m_pageSize) {
        return std::nullopt;
    }
    return m_page.Bytes().subspan(start, end - start);
}

LocatedRow LocateRow(Pager& pager, RowPointer pointer) {
    LocatedRow located;
    located.m_page = DataPage(pager.Get(pointer.m_page), pager.PageLayout());
    located.m_row = located.m_page.RowAt(pointer.m_row);
    return located;
}

}  // namespace quillet::access
