#include "Quillet/registry/Log.h"

#include <algorithm>
#include <cstdarg>
#include <iterator>
#include <new>
#include <utility>

namespace quillet {

void Log::Add(const DbLogEntry& entry) noexcept {
    try {
        Append(entry);
    } catch (const std::bad_alloc&) {
        // Left out.
    }
}

void Log::Add(Kind kind, const CString& line) noexcept {
    try {
        Append({kind, line});
    } catch (const std::bad_alloc&) {
        // Left out.
    }
}

void Log::Print(Kind kind, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    PrintV(kind, nullptr, format, arguments);
    va_end(arguments);
}

void Log::Print(Kind kind, const Place& place, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    PrintV(kind, &place, format, arguments);
    va_end(arguments);
}

void Log::PrintV(Kind kind, const Place* place, const char* format, va_list arguments) noexcept {
    try {
        DbLogEntry entry{kind, {}};
        entry.m_text.FormatV(format, arguments);
        if (place != nullptr) {
            entry.m_table = place->m_table;
            entry.m_row = place->m_row;
        }
        Append(std::move(entry));
    } catch (const std::bad_alloc&) {
        // Left out.
    }
}

void Log::Append(DbLogEntry entry) {
    m_entries.push_back(std::move(entry));
    ++m_added;
    Trim();
}

void Log::SetLimit(std::size_t lines) {
    m_limit = lines;
    Trim();
}

void Log::Trim() {
    while (m_limit > 0 && m_entries.size() > m_limit) {
        m_entries.pop_front();
    }
}

void Log::BackTo(std::size_t added) {
    while (m_added > added && !m_entries.empty()) {
        m_entries.pop_back();
        --m_added;
    }
    m_added = std::min(m_added, added);
}

CString Log::Joined() const {
    CString text;
    const char* separator = "";
    for (const DbLogEntry& entry : m_entries) {
        text += separator;
        text += entry.m_text;
        separator = "\r\n";
    }
    return text;
}

void Log::MoveTo(std::vector<CString>& out) {
    out.reserve(out.size() + m_entries.size());
    for (DbLogEntry& entry : m_entries) {
        out.push_back(std::move(entry.m_text));
    }
    m_entries.clear();
}

void Log::MoveTo(std::vector<DbLogEntry>& out) {
    out.reserve(out.size() + m_entries.size());
    std::move(m_entries.begin(), m_entries.end(), std::back_inserter(out));
    m_entries.clear();
}

}  // namespace quillet
