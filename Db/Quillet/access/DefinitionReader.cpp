#include "Quillet/access/DefinitionReader.h"

#include <algorithm>

#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

constexpr std::size_t NextPage = 4;
// What each further page has before its part of the definition.
constexpr std::size_t PageHeader = 8;
// Far more than columns and indexes can take.
constexpr std::size_t MostPagesOfDefinition = 4096;

}  // namespace

DefinitionReader::DefinitionReader(Pager& pager, PageNumber first) : m_pager(pager) {
    Append(first, 0);
}

ByteView DefinitionReader::Take(std::size_t size) {
    while (m_bytes.size() < m_position + size) {
        if (m_next == 0) {
            throw DamagedPage(m_pages.back(), "the table's definition ends too early");
        }
        if (m_pages.size() == MostPagesOfDefinition || std::ranges::find(m_pages, m_next) != m_pages.end()) {
            throw DamagedPlace(m_pages.back(), NextPage, "the pages of the table's definition form a loop");
        }
        Append(m_next, PageHeader);
    }
    m_position += size;
    return ByteView(m_bytes).subspan(m_position - size, size);
}

void DefinitionReader::Append(PageNumber number, std::size_t skipped) {
    const Page page = m_pager.Get(number, ePageType::Definition);
    const ByteView bytes = page.Bytes().subspan(skipped);
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    m_pages.push_back(number);
    m_next = page.U32(NextPage);
}

}  // namespace quillet::access
