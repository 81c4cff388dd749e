#include "Quillet/access/UsageMap.h"

#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

enum eKind : std::uint8_t { BitsInRow = 0, PagesOfBits = 1 };

constexpr std::size_t KindSize = 1;
constexpr std::size_t FirstPageSize = 4;
constexpr std::size_t PointerSize = 4;
// Where a page of bits has them.
constexpr std::size_t BitsOfPage = 4;

}  // namespace

UsageMap::UsageMap(Pager& pager, RowPointer pointer) : m_place(LocateRow(pager, pointer)) {
    m_row = m_place.m_row.m_bytes;
    const bool isMap =
        !m_row.empty() && !m_place.m_row.m_isMoved &&
        (m_row[0] == PagesOfBits || (m_row[0] == BitsInRow && m_row.size() >= KindSize + FirstPageSize));
    if (!isMap) {
        throw DamagedPage(pointer.m_page, "row " + std::to_string(pointer.m_row) + " is no usage map");
    }
}

UsageMap::Members UsageMap::Pages(Pager& pager) const {
    Members members;
    const PageNumber pageCount = pager.PageCount();
    if (m_row[0] == BitsInRow) {
        AddBits(m_row.subspan(KindSize + FirstPageSize), LittleU32(m_row, KindSize), pageCount, members);
        return members;
    }
    const std::size_t bitsOfPage = (pager.PageLayout().m_pageSize - BitsOfPage) * BitsOfByte;
    for (std::size_t i = 0; KindSize + (i + 1) * PointerSize <= m_row.size(); ++i) {
        const PageNumber number = LittleU32(m_row, KindSize + i * PointerSize);
        if (number != 0) {
            const Page page = pager.Get(number, ePageType::UsageMap);
            AddBits(page.Bytes().subspan(BitsOfPage), i * bitsOfPage, pageCount, members);
        }
    }
    return members;
}

void UsageMap::AddBits(ByteView bits, std::uint64_t firstPage, PageNumber pageCount, Members& members) const {
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i] == 0) {
            continue;
        }
        for (std::size_t bit = i * BitsOfByte; bit < (i + 1) * BitsOfByte; ++bit) {
            const std::uint64_t page = firstPage + bit;
            if (!BitOf(bits, bit)) {
                continue;
            }
            if (page < pageCount) {
                members.m_pages.push_back(static_cast<PageNumber>(page));
            } else {
                ++members.m_beyond;
            }
        }
    }
}

}  // namespace quillet::access
