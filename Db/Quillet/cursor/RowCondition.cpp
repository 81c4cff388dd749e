#include "Quillet/cursor/RowCondition.h"

#include <algorithm>

#include "Quillet/Db_Database.h"
#include "Quillet/query/SqlText.h"

namespace quillet {

bool RowCondition::Read(DbDatabase& database, const CString& table, const DbTableDescr& structure,
                        const CString& text) {
    CString condition = text;
    JoinLines(condition);
    m_params.fields = {"*"};
    m_params.tables = {table};
    m_params.searched = &structure;
    m_params.state = parser::QueryAnalysisParams::Where;
    if (!database.AnalyzeSQL(condition, &m_params)) {
        return false;
    }
    DbTableDescr* const descr = database.GetTableDescr(table);
    if (descr != nullptr) {
        // Reading a text that names more tables may have refreshed them, and changed this one.
        m_filters = descr->TakeFilters(m_params.filters);
    }
    if (m_filters.size() != m_params.filters.size()) {
        return false;
    }
    if (RowsCondition::AreOwn(m_params.filters)) {
        m_onCells.emplace(*m_params.clause, m_params.filters);
    }
    return true;
}

bool RowCondition::Holds(DbRows& rows, uint64 position) {
    if (m_onCells) {
        return m_onCells->Holds(RowsView(rows), position);
    }
    const DbTableRow& row = *rows.GetRow(static_cast<int>(position));
    for (const std::unique_ptr<DbFilter>& filter : m_filters) {
        filter->Evaluate(row);
    }
    return m_params.clause->evaluate();
}

uint64 RowCondition::FirstCandidate(DbRows& rows, uint64 position, uint64 end) {
    constexpr std::size_t FirstRows = 64;
    const RowsView view(rows);
    std::vector<uint64> found;
    // The row that is looked for may be near, or far.
    for (std::size_t most = FirstRows; m_onCells && position < end && view.HasRow(position); most *= 2) {
        const ColumnStore::Run run = view.RunAt(position, std::min<uint64>(most, end - position));
        if (run.m_rows == 0) {
            break;
        }
        m_onCells->Select(view, run, position, found);
        if (!found.empty()) {
            return found.front();
        }
        position += run.m_rows;
    }
    return position;
}

uint64 RowCondition::Count(DbRows& rows) {
    const RowsView view(rows);
    std::vector<uint64> found;
    uint64 count = 0;
    for (uint64 i = 0; i < view.Count();) {
        if (!view.HasRow(i)) {
            ++i;
            continue;
        }
        const ColumnStore::Run run = m_onCells ? view.RunAt(i) : ColumnStore::Run();
        if (run.m_rows == 0) {
            count += Holds(rows, i++) ? 1U : 0U;
            continue;
        }
        found.clear();
        m_onCells->Select(view, run, i, found);
        count += found.size();
        i += run.m_rows;
    }
    return count;
}

}  // namespace quillet
