#include "commands/QueryWords.h"

#include "Quillet/query/SqlText.h"

namespace quillet::tool {

namespace {

constexpr WideView QuoteMarks = OLESTR("'\"\uFF91");
constexpr std::size_t PartsOfACondition = 3;

class Reader {
public:
    explicit Reader(QueryPart part) : m_part(part) {}

    void Read(const std::string& text) {
        CString line(text);
        JoinLines(line);
        const CString spaced = WithBlanksAroundOperators(line);
        SqlTokens tokens(spaced.View());
        while (tokens.Next()) {
            Take(CString(tokens.Token()));
            tokens.Drop();
        }
    }

    std::vector<QueryWord> Words() { return std::move(m_words); }

private:
    void Take(const CString& token) {
        CString lowered = token;
        LowerOutsideQuotes(lowered);
        QueryWord word{token.ToUtf8(), lowered.ToUtf8(), m_part};
        word.m_isText = QuoteMarks.find(token.View().front()) != WideView::npos;
        word.m_isBracketed = token.View().front() == '[';
        word.m_isKeyword = m_isTop || TakeKeyword(word);
        m_isTop = word.Is("top");
        if (m_part == QueryPart::Where && !word.m_isKeyword && !IsOfClause(word)) {
            word.m_place = m_place++ % PartsOfACondition;
        }
        m_words.push_back(std::move(word));
    }

    bool TakeKeyword(QueryWord& word) {
        if (word.Is("select")) {
            m_part = QueryPart::Select;
        } else if (word.Is("from")) {
            m_part = QueryPart::From;
        } else if (word.Is("where")) {
            m_part = QueryPart::Where;
        } else if (word.Is("order")) {
            m_part = QueryPart::Order;
        } else {
            const bool isOfPart = (word.Is("distinct") && m_part == QueryPart::Select) ||
                                  (word.Is("by") && m_part == QueryPart::Order);
            return isOfPart || word.Is("top");
        }
        word.m_part = m_part;
        return true;
    }

    static bool IsOfClause(const QueryWord& word) {
        return word.Is("and") || word.Is("or") || word.Is("not") || word.Is("(") || word.Is(")");
    }

    QueryPart m_part;
    bool m_isTop = false;
    std::size_t m_place = 0;
    std::vector<QueryWord> m_words;
};

}  // namespace

std::vector<QueryWord> WordsOfQuery(const std::string& text) {
    Reader reader(QueryPart::Start);
    reader.Read(text);
    return reader.Words();
}

std::vector<QueryWord> WordsOfCondition(const std::string& text) {
    Reader reader(QueryPart::Where);
    // The first two characters of a text are never separated from what follows.
    reader.Read("  " + text);
    return reader.Words();
}

std::string UnclosedQuote(const std::string& text) {
    const CString wide(text);
    WCHAR opening = 0;
    for (const WCHAR unit : wide.View()) {
        const WCHAR closing = opening == '[' ? WCHAR(']') : opening;
        if (opening == 0) {
            opening = unit == '[' || QuoteMarks.find(unit) != WideView::npos ? unit : WCHAR(0);
        } else if (unit == closing) {
            opening = 0;
        }
    }
    return opening == 0 ? std::string() : CString(WideView(&opening, 1)).ToUtf8();
}

}  // namespace quillet::tool
