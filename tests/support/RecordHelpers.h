// Records for tests: columns by name and value, and tables of them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Quillet/IQuillet.h"

namespace quillet::test {

template <typename Value>
DBACCESS_COLUMN Column(const CString& name, const Value& value) {
    DBACCESS_COLUMN column(name);
    column = value;
    return column;
}

// A column with the code of 16-bit integers.
inline DBACCESS_COLUMN IntegerColumn(const CString& name, int value) {
    DBACCESS_COLUMN column(name);
    column.m_type = DBACCESS_COLUMN::Integer;
    column.m_int = value;
    return column;
}

inline CByteArray BytesOfText(const std::string& text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

inline DBACCESS_RECORD Record(const std::vector<DBACCESS_COLUMN>& columns) {
    DBACCESS_RECORD record;
    record.assign(columns.begin(), columns.end());
    return record;
}

inline DBACCESS_VECTOR Rows(const std::vector<DBACCESS_RECORD>& records) {
    DBACCESS_VECTOR rows;
    rows.assign(records.begin(), records.end());
    return rows;
}

// A table of one text column.
inline std::pair<CString, DBACCESS_VECTOR> TextTable(const CString& table, const CString& field,
                                                     const std::vector<const char*>& texts) {
    std::pair<CString, DBACCESS_VECTOR> named(table, {});
    for (const char* text : texts) {
        named.second.push_back(Record({Column(field, text)}));
    }
    return named;
}

// A table without rows, as a forced definition describes it.
inline std::pair<CString, DBACCESS_VECTOR> TableWithoutRows(const CString& table, const CString& field) {
    auto named = TextTable(table, field, {""});
    named.second.m_noRows = true;
    return named;
}

}  // namespace quillet::test
