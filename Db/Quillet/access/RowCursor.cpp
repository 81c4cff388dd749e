#include "Quillet/access/RowCursor.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quillet::access {
namespace {

std::size_t LowestVariableNumber(const TableDefinition& table) {
    std::size_t lowest = std::numeric_limits<std::size_t>::max();
    for (const Column& column : table.m_columns) {
        if (!column.IsFixed()) {
            lowest = std::min<std::size_t>(lowest, column.m_number);
        }
    }
    return lowest;
}

// The size of the fixed part in a row that has all columns.
std::size_t FixedSize(const TableDefinition& table) {
    std::size_t size = 0;
    for (const Column& column : table.m_columns) {
        if (column.IsFixed() && column.m_type != eColumnType::Boolean) {
            size = std::max(size, std::size_t{column.m_fixedOffset} + column.m_length);
        }
    }
    return size;
}

}  // namespace

RowCursor::RowCursor(Pager& pager, const TextDecoder& texts, const TableDefinition& table,
                     std::vector<PageNumber> pages, DamageLog& log)
    : m_pager(pager),
      m_table(table),
      m_log(log),
      m_pages(std::move(pages)),
      m_fields(pager.PageLayout(), LowestVariableNumber(table)),
      m_recovery(m_fields, FixedSize(table)),
      m_values(pager, texts) {
}

bool RowCursor::Next() {
    for (;;) {
        try {
            if (m_nextRow < m_page.RowCount()) {
                if (TakeRow(m_nextRow++)) {
                    return true;
                }
            } else if (!OpenNextPage()) {
                return false;
            }
        } catch (const Error& error) {
            Report(error);
        }
    }
}

// False if there are no more pages.
bool RowCursor::OpenNextPage() {
    m_page = DataPage();
    m_nextRow = 0;
    m_isRecoveryTried = false;
    if (m_nextPage == m_pages.size()) {
        return false;
    }
    const PageNumber number = m_pages[m_nextPage++];
    DataPage page(m_pager.Get(number), m_pager.PageLayout());
    if (page.Owner() != m_table.m_page) {
        throw DamagedPage(number, "the page is not the table's");
    }
    if (page.IsCountWrong()) {
        Report(DamagedPage(number, "the page states a wrong number of rows"));
    }
    m_page = std::move(page);
    return true;
}

// False if no row of the table begins here.
bool RowCursor::TakeRow(std::size_t row) {
    const DataPage::Row found = FindRow(row);
    if (found.m_isDeleted || found.m_isMovedHere) {
        return false;
    }
    m_place = {m_page.Base().Number(), static_cast<std::uint8_t>(row)};
    const char* const fault = m_fields.Split(found.m_isMoved ? FollowMove(found.m_bytes) : found.m_bytes);
    if (fault != nullptr) {
        throw DamagedPage(m_place.m_page, "row " + std::to_string(row) + ": " + fault);
    }
    return true;
}

// The row where the directory says it is, or where it was found beside a damaged entry.
DataPage::Row RowCursor::FindRow(std::size_t row) {
    try {
        return m_page.RowAt(row);
    } catch (const Error& error) {
        if (!m_isRecoveryTried) {
            m_recovery.Search(m_page, row);
            m_isRecoveryTried = true;
        }
        const std::optional<DataPage::Row> found = m_recovery.Find(row);
        if (!found) {
            throw;
        }
        Report(error);
        return *found;
    }
}

ByteView RowCursor::FollowMove(ByteView bytes) {
    if (bytes.size() < RowPointer::Size) {
        throw DamagedPage(m_place.m_page, "a moved row has no room for its new place");
    }
    const RowPointer pointer = RowPointer::Read(bytes, 0);
    LocatedRow located = LocateRow(m_pager, pointer);
    if (!located.m_row.m_isMovedHere || located.m_page.Owner() != m_table.m_page) {
        throw DamagedPage(m_place.m_page, "row " + std::to_string(m_place.m_row) +
                                              " was moved to a place that is not for it");
    }
    m_movedTo = std::move(located.m_page);
    return located.m_row.m_bytes;
}

bool RowCursor::Read(std::size_t column, Value& value) {
    try {
        m_values.Read(m_fields, m_table.m_columns[column], value);
        if (!m_values.IsShort()) {
            return true;
        }
        Report(DamagedPage(m_place.m_page, "row " + std::to_string(m_place.m_row) + ", column " +
                                               std::to_string(column) + ": a part of the value is missing"));
    } catch (const Error& error) {
        Report(error);
    }
    return false;
}

void RowCursor::Report(const Error& error) {
    if (error.Kind() == Error::Unreadable) {
        throw error;
    }
    m_log.Add(error);
}

}  // namespace quillet::access
