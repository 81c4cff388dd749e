// Conditions on rows that need not be made.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
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

    // The same for rows that follow one another in columns: sets the bit in the mark of each row for which
    // the filter holds. False, and nothing is set, where that has to be found row by row.
    bool Mark(const ColumnStore::Run& rows, std::uint8_t bit, std::uint8_t* marks);

private:
    bool Compare(const CellView& left, const CellView& right);
    // Whether a text is the literal, which has a form in UTF-8, without regard to case.
    bool IsLiteral(std::string_view text);

    const DbFilter* m_filter;
    Operator m_operator;
    // The literals, where there are any.
    CellView m_leftValue;
    CellView m_rightValue;
    // The text of a literal, in UTF-8; nothing if it has no such form.
    std::optional<std::string> m_text;
    bool m_isTextAscii = false;
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

    // Appends the positions of the rows for which the clause holds, of a run that begins at a visible
    // position.
    void Select(const RowsView& rows, const ColumnStore::Run& run, uint64 position,
                std::vector<uint64>& found);
    // Whether the clause holds for a row, which must exist. The filters may keep older results.
    bool Holds(const RowsView& rows, uint64 position);

private:
    // What the clause says is looked up by a bit for each filter, where there are no more than these.
    static constexpr std::size_t MostBits = 8;

    void TabulateClause();

    clv::clause& m_clause;
    std::vector<DbFilter*> m_filters;
    std::vector<CellFilter> m_leaves;
    // Empty where there are too many filters, or the clause is of a derived class.
    std::vector<std::uint8_t> m_table;
    std::vector<std::uint8_t> m_marks;
};

}  // namespace quillet
