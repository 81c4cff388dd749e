#include "Quillet/Db_Log.h"

#include <cstdarg>
#include <iterator>

namespace quillet {

void DbLog::Add(const CString& line) {
    m_lines.push_back(line);
}

void DbLog::Print(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CString line;
    line.FormatV(format, arguments);
    va_end(arguments);
    m_lines.push_back(std::move(line));
}

CString DbLog::Joined() const {
    CString text;
    for (const CString& line : m_lines) {
        if (&line != m_lines.data()) {
            text += "\r\n";
        }
        text += line;
    }
    return text;
}

void DbLog::MoveTo(std::vector<CString>& out) {
    out.insert(out.end(), std::make_move_iterator(m_lines.begin()), std::make_move_iterator(m_lines.end()));
    m_lines.clear();
}

}  // namespace quillet
