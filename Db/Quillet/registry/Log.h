// The lines that a database keeps of what it did and of what went wrong.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "Quillet/base/CString.h"

namespace quillet {

// A line for which there is no memory is left out: no operation fails because it could not be told of.
class Log {
public:
    void Add(const CString& line) noexcept;
    // A line by printf over UTF-8 text.
    void Print(const char* format, ...) noexcept QUILLET_PRINTF_LIKE(2, 3);

    // The most lines that are kept, the latest ones; 0 for all.
    void SetLimit(std::size_t lines);
    std::size_t Count() const { return m_lines.size(); }
    // Of all lines that were ever added, how many; lines that were left out do not count.
    std::size_t Added() const { return m_added; }
    // Drops lines from the end until Added is what it was.
    void BackTo(std::size_t added);
    // All lines with "\r\n" between them.
    CString Joined() const;
    // The latest line; empty where there is none.
    CString Last() const { return m_lines.empty() ? CString() : m_lines.back(); }
    // Appends the lines to out and empties the log.
    void MoveTo(std::vector<CString>& out);
    void Clear() { m_lines.clear(); }

private:
    void Trim();

    std::deque<CString> m_lines;
    std::size_t m_limit = 0;
    std::size_t m_added = 0;
};

}  // namespace quillet
