// What a query text says, taken apart.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Quillet/base/CString.h"
#include "Quillet/clv/clause.h"

class DbFilter;
class DbTableDescr;

namespace parser {

// Filled by DbDatabase::AnalyzeSQL. Names and keywords are lowered, quoted texts keep their quotation marks.
//
// Use a new record for each text: what is read is appended to what the record holds. To read conditions
// alone, prepare a record that begins after WHERE: the state Where, the field "*", and the table.
struct QUILLET_API QueryAnalysisParams {
    // What the next token belongs to. ByExpected: ORDER was read, but not BY.
    enum eState : std::int32_t {
        Start = 0,
        Select = 1,
        Top = 3,
        From = 4,
        Where = 5,
        ByExpected = 6,
        OrderBy = 7
    };

    QueryAnalysisParams();
    QueryAnalysisParams(const QueryAnalysisParams&) = delete;
    QueryAnalysisParams& operator=(const QueryAnalysisParams&) = delete;
    virtual ~QueryAnalysisParams();

    // Owned. Its leaves are the filters. A record without one is not filled.
    std::unique_ptr<clv::clause> clause;
    // The SELECT list as written; "*" for all fields.
    std::vector<quillet::CString> fields;
    // The FROM list, without brackets.
    std::vector<quillet::CString> tables;
    // The ORDER BY names, without brackets.
    std::vector<quillet::CString> order;
    bool desc = false;
    // Each condition that was read: left side, operator and right side, with blanks between them.
    std::vector<quillet::CString> conditions;
    // Every keyword and token, in the order read.
    std::vector<quillet::CString> tokens;
    // The parts of a condition that is not complete.
    std::vector<quillet::CString> parts;
    eState state = Start;
    // The state before TOP.
    eState savedState = Start;
    bool distinct = false;
    // The most rows to answer with; -1 for no limit.
    std::int32_t top = -1;
    // The conditions as filters, in the order read. The descriptor of the first table owns them.
    std::vector<DbFilter*> filters;
    // If not null, the first table must have this structure: a name that now means another table counts as
    // unknown. Not owned.
    const DbTableDescr* searched = nullptr;
};

}  // namespace parser
