// A table of a million rows, in a catalog file and in SQLite.
#pragma once

#include <Quillet/IQuillet.h>
#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <string>

#include "CellCollation.h"

namespace bench {

constexpr std::uint32_t PartCount = 1000000;

// The values of one row. Factors that are coprime to the number of rows shuffle their order.
struct Part {
    explicit Part(std::uint32_t row)
        : m_number(static_cast<LONG>(std::uint64_t{row} * 7919U % PartCount)),
          m_length(static_cast<double>(std::uint64_t{row} * 611953U % PartCount) / 7),
          m_height(static_cast<double>(row * 2654435761U % HeightCount) / 10.0),
          m_name(std::string(Kinds[row % Kinds.size()]) + " " +
                 std::to_string(std::uint64_t{row} * 104729U % PartCount)),
          m_family(m_number % LabelCount),
          m_label("M " + std::to_string(m_family)),
          m_grade(static_cast<LONG>(row % Kinds.size())),
          m_kind(Kinds[row % Kinds.size()]) {}

    static constexpr std::array<const char*, 6> Kinds = {"sheet", "beam", "Tube", "angle", "flat bar", "rod"};
    static constexpr std::uint32_t HeightCount = 100000;
    static constexpr LONG LabelCount = 20000;

    // Different in every row, as are the length and the name.
    LONG m_number;
    double m_length;
    // Of 100,000 values, from 0 to 9999.9.
    double m_height;
    quillet::CString m_name;
    // Of 20,000 values, like the label.
    LONG m_family;
    quillet::CString m_label;
    // Of six values, like the kind.
    LONG m_grade;
    quillet::CString m_kind;
};

// The catalog file with the table "parts". It is created once in the folder QUILLET_BENCH_DIR, or in the
// current one.
quillet::CString PartsFile();

// Has one object for each row of the table made, by looking at every cell.
void MakeRows(DbTableData& data);

// The same table in memory. Texts are compared like cells by the collation "cells".
class PartsInSqlite {
public:
    PartsInSqlite();
    PartsInSqlite(const PartsInSqlite&) = delete;
    PartsInSqlite& operator=(const PartsInSqlite&) = delete;
    ~PartsInSqlite() { sqlite3_close(m_database); }

    void Run(const std::string& sql);
    sqlite3_stmt* Prepare(const std::string& sql);

private:
    CellCollation m_collation;
    sqlite3* m_database = nullptr;
};

}  // namespace bench
