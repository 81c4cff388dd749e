// A query text split into words, each with its place in the query.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quillet::tool {

enum class QueryPart { Start, Select, From, Where, Order };

struct QueryWord {
    // As it was written, and as the database reads it: in lower case except for quoted texts.
    std::string m_text;
    std::string m_lowered;
    QueryPart m_part;
    // A word that begins the next part, or distinct, top or its number.
    bool m_isKeyword = false;
    // In quotation marks, or in square brackets.
    bool m_isText = false;
    bool m_isBracketed = false;
    // Its role in a condition: 0 left, 1 operator, 2 right; None outside, and for and, or, not and brackets.
    std::size_t m_place = None;

    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    // The word itself, if it is not quoted or bracketed.
    bool Is(const char* word) const { return !m_isText && !m_isBracketed && m_lowered == word; }
};

// The words in the order of the text, by the rules of the database's analyser. A condition alone begins where
// a query has its where.
std::vector<QueryWord> WordsOfQuery(const std::string& text);
std::vector<QueryWord> WordsOfCondition(const std::string& text);

// The quotation mark or bracket that is opened in a query and never closed; empty if there is none.
std::string UnclosedQuote(const std::string& text);

}  // namespace quillet::tool
