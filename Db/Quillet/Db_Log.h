// The lines that a database keeps of what it did and of what went wrong.
#pragma once

#include <vector>

#include "base/CString.h"

namespace quillet {

class DbLog {
public:
    void Add(const CString& line);
    // A line by printf over UTF-8 text.
    void Print(const char* format, ...) QUILLET_PRINTF_LIKE(2, 3);

    const std::vector<CString>& Lines() const { return m_lines; }
    // All lines with "\r\n" between them.
    CString Joined() const;
    // Appends the lines to out and empties the log.
    void MoveTo(std::vector<CString>& out);

private:
    std::vector<CString> m_lines;
};

}  // namespace quillet
