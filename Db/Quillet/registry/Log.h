// The lines in which a database records what it did and what went wrong.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <deque>
#include <vector>

#include "Quillet/Db_LogEntry.h"

namespace quillet {

// A line for which there is no memory is left out: no operation fails because it can't be logged.
class Log {
public:
    using Kind = DbLogEntry::Kind;

    // The table and the row that a line is about; the table's name is copied where there is memory for it.
    struct Place {
        explicit Place(const CString& table, uint64 row = 0) : m_table(table), m_row(row) {}

        const CString& m_table;
        uint64 m_row;
    };

    void Add(const DbLogEntry& entry) noexcept;
    void Add(Kind kind, const CString& line) noexcept;
    // A line by printf over UTF-8 text.
    void Print(Kind kind, const char* format, ...) noexcept QUILLET_PRINTF_LIKE(3, 4);
    void Print(Kind kind, const Place& place, const char* format, ...) noexcept QUILLET_PRINTF_LIKE(4, 5);

    // Keeps that many of the latest lines; 0 keeps all.
    void SetLimit(std::size_t lines);
    std::size_t Count() const { return m_entries.size(); }
    // How many lines were ever added; lines that were left out do not count.
    std::size_t Added() const { return m_added; }
    // Drops lines from the end until Added is back at the number.
    void BackTo(std::size_t added);
    // All lines with "\r\n" between them.
    CString Joined() const;
    // The latest line; empty if there is none.
    CString Last() const { return m_entries.empty() ? CString() : m_entries.back().m_text; }
    // Appends the lines to out and empties the log.
    void MoveTo(std::vector<CString>& out);
    void MoveTo(std::vector<DbLogEntry>& out);
    void Clear() { m_entries.clear(); }

private:
    void PrintV(Kind kind, const Place* place, const char* format, va_list arguments) noexcept;
    void Append(DbLogEntry entry);
    void Trim();

    std::deque<DbLogEntry> m_entries;
    std::size_t m_limit = 0;
    std::size_t m_added = 0;
};

}  // namespace quillet
