// How query texts are written.
#pragma once

#include <cstddef>

#include "Quillet/Db_LogEntry.h"

namespace quillet {

// Puts a blank in place of every carriage return and line feed.
void JoinLines(CString& text);

// Lowers the text outside quoted stretches. A stretch opens with ', " or U+FF91 and closes at the next
// occurrence of the same character.
void LowerOutsideQuotes(CString& text);

// Puts blanks around the operators * ) ( < > = outside quoted stretches, so that each is a separate token.
// <=, >=, == and <> stay together, and so does != after a blank. The first two characters are left alone.
CString WithBlanksAroundOperators(const CString& sql);

// A name as it comes out of a query text that has it in square brackets: with blanks around operators. At the
// beginning of the text the first character of the name is left alone.
CString SpacedName(const CString& name, bool isAtBeginning);

// Whether blanks may have been put into the text.
bool HoldsOperator(const CString& text);

// What the log says of a name in a query text that means nothing.
DbLogEntry NoTableEntry(const CString& table);
DbLogEntry NoFieldEntry(const CString& field, const CString& table);

// Of a condition whose field, operator and value don't go together.
DbLogEntry InvalidConditionEntry(const CString& condition);

// Of a table whose rows can't be read, for the reason given.
DbLogEntry UnreadRowsEntry(const CString& table, const CString& why);

// Cuts a query text into tokens at blanks, commas and semicolons. A token may hold quoted stretches, in ', ",
// [ ] or U+FF91, in which nothing separates; the quotation marks stay.
class SqlTokens {
public:
    // The text must live as long as this object.
    explicit SqlTokens(WideView text) : m_text(text) {}

    // Reads on to the end of the token. False when the text is at its end.
    bool Next();
    // The token, never empty; valid until the next call.
    WideView Token() const { return m_token; }
    // Forgets the token. One that is not dropped is the beginning of the next.
    void Drop() { m_token.clear(); }

private:
    WideView m_text;
    std::size_t m_position = 0;
    bool m_atEnd = false;
    WideString m_token;
};

}  // namespace quillet
