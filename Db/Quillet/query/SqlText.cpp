#include "Quillet/query/SqlText.h"
#include "Quillet/values/Names.h"

#include <algorithm>

namespace quillet {

namespace {

constexpr WideView Operators = OLESTR("*)(<>=");

bool IsOneOf(WideView marks, WCHAR unit) {
    return marks.find(unit) != WideView::npos;
}

// Whether the two characters are one operator.
bool IsPair(WCHAR first, WCHAR second) {
    return (second == '=' && IsOneOf(OLESTR("<>="), first)) || (first == '<' && second == '>');
}

// The position after the stretch that a quotation mark opens at the position.
std::size_t EndOfQuote(WideView text, std::size_t open) {
    const std::size_t close = text.find(text[open], open + 1);
    return close == WideView::npos ? text.size() : close + 1;
}

}  // namespace

void JoinLines(CString& text) {
    text.Replace("\r", " ");
    text.Replace("\n", " ");
}

void LowerOutsideQuotes(CString& text) {
    const WideString source(text.View());
    CString result;
    std::size_t position = 0;
    while (position < source.size()) {
        const std::size_t open = std::min(source.find_first_of(QuoteMarks, position), source.size());
        result += Lowered(CString(WideView(source).substr(position, open - position)));
        if (open == source.size()) {
            break;
        }
        const std::size_t end = EndOfQuote(source, open);
        result += CString(WideView(source).substr(open, end - open));
        position = end;
    }
    text = result;
}

CString WithBlanksAroundOperators(const CString& sql) {
    constexpr std::size_t LeftAlone = 2;
    const WideView text = sql.View();
    WideString result;
    std::size_t at = 0;
    while (at < text.size()) {
        const WCHAR unit = text[at];
        if (IsOneOf(QuoteMarks, unit)) {
            const std::size_t end = EndOfQuote(text, at);
            result += text.substr(at, end - at);
            at = end;
            continue;
        }
        if (!IsOneOf(Operators, unit)) {
            result += unit;
            ++at;
            continue;
        }
        const WCHAR next = at + 1 < text.size() ? text[at + 1] : WCHAR(0);
        const std::size_t length = IsPair(unit, next) ? 2 : 1;
        const WideView partners = length == 2 ? OLESTR("!") : OLESTR("=<>!");
        const bool joins = unit == '=' && !result.empty() && IsOneOf(partners, result.back());
        if (at >= LeftAlone && !joins && result.back() != ' ') {
            result += ' ';
        }
        result += text.substr(at, length);
        at += length;
        const bool isJoined = unit == '=' && length == 1 && IsOneOf(OLESTR("<>!"), next);
        if (at > LeftAlone && at < text.size() && text[at] != ' ' && !isJoined) {
            result += ' ';
        }
    }
    return CString(WideView(result));
}

CString SpacedName(const CString& name, bool isAtBeginning) {
    const CString front = isAtBeginning ? "[" : "  [";
    const CString text = WithBlanksAroundOperators(front + name + "]");
    return text.Mid(front.GetLength(), text.GetLength() - front.GetLength() - 1);
}

bool HoldsOperator(const CString& text) {
    return text.View().find_first_of(Operators) != WideView::npos;
}

DbLogEntry NoTableEntry(const CString& table) {
    DbLogEntry entry{DbLogEntry::Kind::QueryFault, {}, table};
    entry.m_text.Format("SQL Analyze - no table '%s' found", table.ToUtf8().c_str());
    return entry;
}

DbLogEntry NoFieldEntry(const CString& field, const CString& table) {
    DbLogEntry entry{DbLogEntry::Kind::QueryFault, {}, table, 0, field};
    entry.m_text.Format("SQL Analyze - no '%s' field found in '%s' table", field.ToUtf8().c_str(),
                        table.ToUtf8().c_str());
    return entry;
}

DbLogEntry InvalidConditionEntry(const CString& condition) {
    DbLogEntry entry{DbLogEntry::Kind::QueryFault, {}};
    entry.m_text.Format("SQL Analyze - invalid condition '%s'", condition.ToUtf8().c_str());
    return entry;
}

DbLogEntry UnreadRowsEntry(const CString& table, const CString& why) {
    DbLogEntry entry{DbLogEntry::Kind::QueryFault, {}, table};
    entry.m_text.Format("SQL Analyze - the rows of '%s' can't be read: %s", table.ToUtf8().c_str(),
                        why.ToUtf8().c_str());
    return entry;
}

bool SqlTokens::Next() {
    WCHAR closing = 0;
    while (!m_atEnd) {
        m_atEnd = m_position == m_text.size();
        const WCHAR unit = m_atEnd ? WCHAR(' ') : m_text[m_position];
        ++m_position;
        if (!m_atEnd && closing != 0) {
            m_token += unit;
            closing = unit == closing ? WCHAR(0) : closing;
        } else if (m_atEnd || IsOneOf(OLESTR(" ,;"), unit)) {
            if (!m_token.empty()) {
                return true;
            }
        } else {
            if (unit == '[') {
                closing = ']';
            } else if (IsOneOf(QuoteMarks, unit)) {
                closing = unit;
            }
            m_token += unit;
        }
    }
    return false;
}

}  // namespace quillet
