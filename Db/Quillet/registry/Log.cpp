#include "Quillet/registry/Log.h"

#include <algorithm>
#include <cstdarg>
#include <iterator>
#include <new>

namespace quillet {

void Log::Add(const CString& line) noexcept {
    try {
        m_lines.push_back(line);
        ++m_added;
        Trim();
    } catch (const std::bad_alloc&) {
        // Left out.
    }
}

void Log::Print(const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    try {
        CString line;
        line.FormatV(format, arguments);
        Add(line);
    } catch (const std::bad_alloc&) {
        // Left out.
    }
    va_end(arguments);
}

void Log::SetLimit(std::size_t lines) {
    m_limit = lines;
    Trim();
}

void Log::Trim() {
    while (m_limit > 0 && m_lines.size() > m_limit) {
        m_lines.pop_front();
    }
}

void Log::BackTo(std::size_t added) {
    while (m_added > added && !m_lines.empty()) {
        m_lines.pop_back();
        --m_added;
    }
    m_added = std::min(m_added, added);
}

CString Log::Joined() const {
    CString text;
    const char* separator = "";
    for (const CString& line : m_lines) {
        text += separator;
        text += line;
        separator = "\r\n";
    }
    return text;
}

void Log::MoveTo(std::vector<CString>& out) {
    out.reserve(out.size() + m_lines.size());
    std::move(m_lines.begin(), m_lines.end(), std::back_inserter(out));
    m_lines.clear();
}

}  // namespace quillet
