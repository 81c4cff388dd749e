// What the program says about a query text beside what the database says: help with words that the language
// does not have, with misspelt names, and with texts that are understood otherwise than they look.
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

// What to do about a text that was refused, to be put after the reasons: "; did you mean ...?". Empty where
// nothing is known.
std::string HintOnRefusal(DbDatabase& database, const QueryText& query);

// What to know about the answer of a text, one line each: a quote that is never closed, a condition that ends
// with an operator, a name that fits several fields.
std::vector<std::string> WarningsOnAnswer(DbDatabase& database, const QueryText& query);

}  // namespace quillet::tool
