// A condition that is evaluated for one row after another.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Quillet/Db_Filter.h"
#include "Quillet/Db_QueryAnalysisParams.h"
#include "Quillet/rows/CellFilter.h"

class DbDatabase;
class DbTableDescr;

namespace quillet {

class RowCondition {
public:
    // Reads a condition on the rows of the named table, which has the structure, as the part of a query after
    // WHERE; DbRecordset::Condition puts blanks in front where they are needed. False, with lines in the
    // database's log, for a text that is none, and for conditions if the name means no table, or another one.
    // An empty text holds for every row.
    bool Read(DbDatabase& database, const CString& table, const DbTableDescr& structure, const CString& text);
    // Whether the brackets match; a condition that is not valid holds for no row.
    bool IsValid() const { return m_params.clause->IsValid(); }
    // Whether the condition holds for the row at a visible position, which must exist.
    bool Holds(DbRows& rows, uint64 position);
    // The first visible position from one on, and before the end, for whose row the condition may hold; the
    // end if there is none.
    uint64 FirstCandidate(DbRows& rows, uint64 position, uint64 end);

    // How many rows it holds for.
    uint64 Count(DbRows& rows);

private:
    // Declared before the clause, whose leaves they are.
    std::vector<std::unique_ptr<DbFilter>> m_filters;
    parser::QueryAnalysisParams m_params;
    // The same for rows that need not be made; nothing if a filter has its own way to evaluate a row.
    std::optional<RowsCondition> m_onCells;
};

}  // namespace quillet
