// A line of a database's log.
#pragma once

#include <cstdint>

#include "Quillet/base/CString.h"

// What a line says, as text, and what it is about, for programs.
struct DbLogEntry {
    enum class Kind : std::uint8_t {
        // What the database did: a table was created or renamed, a file was imported, how long it took.
        Report,
        // A text was read as a query or a condition, and not as the name of a table.
        QueryRead,
        // What became of a query or a find.
        QueryReport,
        // Why a query, a find or a join has no answer.
        QueryFault,
        // Something in the file that could not be read, or was left out.
        ReadFault,
        // The file is not laid out as a catalog.
        NoCatalog,
        // Not all rows of the table could be read.
        MalformedRows,
        // What could not be saved.
        SaveFault,
        // The function in which that happened, and the place of the value.
        SaveTrace,
        // A call that had no effect.
        Refused
    };

    Kind m_kind = Kind::Report;
    quillet::CString m_text;
    // The table, as far as the line is about one; empty otherwise.
    quillet::CString m_table = {};
    // The row, counted from 1 as the text counts; 0 for none.
    uint64 m_row = 0;
    // The field's name; empty for none.
    quillet::CString m_field = {};

    // The text without the words that begin every line about the analysis of a query.
    quillet::CString Message() const {
        constexpr quillet::WideView Analysis = OLESTR("SQL Analyze - ");
        const bool isOfQuery =
            m_kind == Kind::QueryRead || m_kind == Kind::QueryReport || m_kind == Kind::QueryFault;
        return isOfQuery && m_text.View().starts_with(Analysis)
                   ? m_text.Mid(static_cast<int>(Analysis.size()))
                   : m_text;
    }
};
