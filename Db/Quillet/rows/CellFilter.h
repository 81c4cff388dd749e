// Conditions on rows that need not be made.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Quillet/Db_Filter.h"
#include "Quillet/clv/clause.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/values/Comparison.h"

namespace quillet {

// A filter that is evaluated on cells.
class CellFilter {
public:
    // The filter must outlive the object, and be of no derived class.
    explicit CellFilter(const DbFilter& filter);

    // What DbFilter::Evaluate finds for the row, which must exist.
    bool Holds(const RowsView& rows, uint64 position);

    // The same for rows that follow one another in columns, from a visible position on: appends the positions
    // of those for which the filter holds. False, and nothing is appended, where that has to be found row by
    // row.
    bool Select(const ColumnStore::Run& rows, uint64 position, std::vector<uint64>& found) const;

private:
    bool Compare(const CellView& left, const CellView& right);

    const DbFilter* m_filter;
    Operator m_operator;
    // The literals, where there are any.
    CellView m_leftValue;
    CellView m_rightValue;
    // The text of a literal, in UTF-8; nothing if it has no such form.
    std::optional<std::string> m_text;
    CComVariant m_left;
    CComVariant m_right;
    WideString m_wide;
};

// A clause over filters.
class RowsCondition {
public:
    // Whether all are of no derived class, whose own way to evaluate a row counts.
    static bool AreOwn(std::span<DbFilter* const> filters);

    // The leaves of the clause are the filters, which are of no derived class. They and the clause must
    // outlive the object.
    RowsCondition(clv::clause& clause, std::span<DbFilter* const> filters);

    // See CellFilter::Select.
    bool Select(const ColumnStore::Run& rows, uint64 position, std::vector<uint64>& found) const {
        return m_isOneFilter && m_leaves.front().Select(rows, position, found);
    }
    // Whether the clause holds for a row, which must exist. The filters may keep older results.
    bool Holds(const RowsView& rows, uint64 position);

private:
    clv::clause& m_clause;
    std::vector<DbFilter*> m_filters;
    std::vector<CellFilter> m_leaves;
    // The clause is a single filter.
    bool m_isOneFilter;
};

}  // namespace quillet
