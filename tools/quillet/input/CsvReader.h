// Reads comma-separated values according to RFC 4180, with any delimiter.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillet::tool {

// Whether the character can be a delimiter: an ASCII character that neither quotes values nor ends lines.
bool IsCsvDelimiter(char letter);

// Reads the rows of a text. Blanks belong to the values; quoted values may contain line breaks; rows end with
// CRLF, LF or CR; empty lines and a byte-order mark are skipped. Malformed input throws Failure with the name
// of the file and the line.
class CsvReader {
public:
    // The text must outlive the reader; the name is that of the file, for messages. The delimiter must be one
    // that IsCsvDelimiter accepts.
    CsvReader(std::string_view text, std::string name, char delimiter = ',');
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;
    ~CsvReader();

    // Moves to the next row, the first one at the beginning; false when there is none.
    bool Next();

    // The values of the row; valid until the next move.
    const std::vector<std::string>& Values() const;
    // The line on which the row begins, from 1.
    std::size_t Line() const { return m_rowLine; }

    // The number of bytes read so far.
    std::size_t Position() const { return m_size - m_rest.size(); }

    // "FILE:LINE: message" for the current row.
    std::string Message(std::string_view message) const;

private:
    struct Parser;

    void CheckEncoding() const;
    void Feed(std::string_view line);
    void FinishLastRow();
    [[noreturn]] void Fail(std::size_t line, std::string_view message) const;

    std::string_view m_rest;
    std::size_t m_size;
    std::string m_name;
    std::unique_ptr<Parser> m_parser;
    // The line that is fed next, and the one on which the current row begins.
    std::size_t m_nextLine = 1;
    std::size_t m_rowLine = 0;
    bool m_isFinished = false;
};

}  // namespace quillet::tool
