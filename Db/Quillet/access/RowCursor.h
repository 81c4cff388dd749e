// The rows of a table, one after the other.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Quillet/access/DataPage.h"
#include "Quillet/access/RowFields.h"
#include "Quillet/access/RowRecovery.h"
#include "Quillet/access/TableDefinition.h"
#include "Quillet/access/ValueReader.h"

namespace quillet::access {

// Rows and values that can't be read are skipped and added to the log. Failures of the system are thrown, as
// Error of kind Unreadable.
class RowCursor {
public:
    // Begins before the first row. The pages are those that hold the table's rows; pager, texts, table and
    // log must outlive the cursor.
    RowCursor(Pager& pager, const TextDecoder& texts, const TableDefinition& table,
              std::vector<PageNumber> pages, DamageLog& log);

    // Moves to the next row; false if there is none.
    bool Next();

    // Where indexes say that the row is. A row that was moved keeps the place at which it was made.
    RowPointer Place() const { return m_place; }

    // The value of the column at that position of the definition. Its texts and bytes stay until the next
    // value is read and no longer than the row. False if the value is damaged; it then is Null, or, if a long
    // value is incomplete, as much of it as there is.
    bool Read(std::size_t column, Value& value);

private:
    bool OpenNextPage();
    bool TakeRow(std::size_t row);
    DataPage::Row FindRow(std::size_t row);
    ByteView FollowMove(ByteView bytes);
    void Report(const Error& error);

    Pager& m_pager;
    const TableDefinition& m_table;
    DamageLog& m_log;
    std::vector<PageNumber> m_pages;
    std::size_t m_nextPage = 0;
    DataPage m_page;
    std::size_t m_nextRow = 0;
    RowPointer m_place;
    // Keeps the bytes of a row that was moved to another page.
    DataPage m_movedTo;
    RowFields m_fields;
    RowRecovery m_recovery;
    // Searched once on a page, so that a page that is all damage costs no more than its size.
    bool m_isRecoveryTried = false;
    ValueReader m_values;
};

}  // namespace quillet::access
