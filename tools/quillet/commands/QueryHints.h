// The program's own hints about a query text, in addition to the database's messages: help with words that
// the language does not have, with misspelt names, and with texts that mean something else than they seem to.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"

namespace quillet::tool {

// A whole query, or the name of a table; or, with a table, a condition on its rows.
struct QueryText {
    std::string m_text;
    std::string m_table = {};
};

// A hint about a text that was refused, to follow the reasons: "; did you mean ...?". Empty if there is none.
std::string HintOnRefusal(DbDatabase& database, const QueryText& query);

// Warnings about the answer of a text, one line each: a quote that is never closed, a condition that ends
// with an operator, a name that matches several fields.
std::vector<std::string> WarningsOnAnswer(DbDatabase& database, const QueryText& query);

}  // namespace quillet::tool
