// Queries over a table of a million rows, beside SQLite with the same rows in memory. Both sides hand the
// selected columns to the caller, who looks at every value.
#include <Quillet/IQuillet.h>
#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Measure.h"
#include "Quillet/Db_Distinct.h"
#include "Quillet/Db_RowOrder.h"

namespace {

using bench::Measure;
using bench::Require;
using quillet::platform::WideString;
using quillet::platform::WideView;

constexpr std::uint32_t RowCount = 1000000;
constexpr std::uint32_t LabelCount = 20000;

// The values of one row. The numbers that are prime to the number of rows mix their order.
struct Part {
    explicit Part(std::uint32_t row)
        : m_number(static_cast<LONG>(std::uint64_t{row} * 7919U % RowCount)),
          m_length(static_cast<double>(std::uint64_t{row} * 611953U % RowCount) / 7),
          m_height(static_cast<double>(row * 2654435761U % 100000U) / 10.0),
          m_name(std::string(Kinds[row % Kinds.size()]) + " " +
                 std::to_string(std::uint64_t{row} * 104729U % RowCount)),
          m_label("M " + std::to_string(std::uint64_t{row} * 7919U % LabelCount)),
          m_kind(Kinds[row % Kinds.size()]) {}

    static constexpr std::array<const char*, 6> Kinds = {"sheet", "beam", "Tube", "angle", "flat bar", "rod"};

    // Different in every row, as are the length and the name.
    LONG m_number;
    double m_length;
    // Of 100,000 values.
    double m_height;
    quillet::CString m_name;
    quillet::CString m_label;
    quillet::CString m_kind;
};

enum Field : uint64 { Number, Length, Height, Name, Label, Kind };

// A query as SQL, and what the words mean as positions of fields.
struct Query {
    const char* m_sql;
    std::vector<uint64> m_select;
    bool m_distinct;
    std::vector<uint64> m_order;
};

// What the caller has seen: how many rows, and a number that tells their values and their order.
struct Seen {
    void Take(double value) { m_mixed = m_mixed * 31 + static_cast<std::uint64_t>(value * 64); }
    void Take(WideView text) {
        Take(static_cast<double>(text.size()));
        Take(static_cast<double>(text.empty() ? 0 : text.back()));
    }

    friend bool operator==(const Seen&, const Seen&) = default;

    std::size_t m_rows = 0;
    std::uint64_t m_mixed = 0;
};

class Quillet {
public:
    Quillet() : m_info(m_database.CreateTable("parts", DbTableInfo::Table)) {
        DbTableDescr& descr = *m_info->GetDescr();
        descr.CreateField("number", false, DbFieldDescr::Long);
        descr.CreateField("length", false, DbFieldDescr::Double);
        descr.CreateField("height", false, DbFieldDescr::Double);
        descr.CreateField("name", false, DbFieldDescr::Text);
        descr.CreateField("label", false, DbFieldDescr::Text);
        descr.CreateField("kind", false, DbFieldDescr::Text);
        DbTableData& data = *m_info->GetData();
        data.AddRows(RowCount);
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            DbTableRow& row = data[i];
            row[Number].GetVariant() = part.m_number;
            row[Length].GetVariant() = part.m_length;
            row[Height].GetVariant() = part.m_height;
            row[Name].GetVariant() = part.m_name;
            row[Label].GetVariant() = part.m_label;
            row[Kind].GetVariant() = part.m_kind;
        }
    }

    Seen Answer(const Query& query) {
        DbTableData& data = *m_info->GetData();
        std::vector<DbTableRow*> rows(data.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i] = &data[i];
        }
        Seen seen;
        const std::vector<uint64> positions = query.m_distinct ? quillet::DistinctRows(rows, query.m_select)
                                                               : quillet::OrderOfRows(rows, query.m_order);
        for (const uint64 position : positions) {
            const DbTableRow& row = *rows[position];
            for (const uint64 field : query.m_select) {
                const CComVariant& value = row[field].GetValue();
                switch (value.vt) {
                    case VT_I4:
                        seen.Take(value.lVal);
                        break;
                    case VT_R8:
                        seen.Take(value.dblVal);
                        break;
                    default:
                        seen.Take(value.Text());
                        break;
                }
            }
            ++seen.m_rows;
        }
        return seen;
    }

private:
    DbDatabase m_database;
    DbTableInfo* m_info;
};

// The comparison of cells, as a collation of SQLite.
class Comparison {
public:
    static int Compare(void* self, int leftBytes, const void* left, int rightBytes, const void* right) {
        return static_cast<Comparison*>(self)->Compare(TextOf(left, leftBytes), TextOf(right, rightBytes));
    }

    static WideView TextOf(const void* text, int bytes) {
        return {static_cast<const WCHAR*>(text), static_cast<std::size_t>(bytes) / sizeof(WCHAR)};
    }

private:
    // A value of each length, so that SQLite's time is not spent on making strings.
    using ByLength = std::vector<CComVariant>;

    static const CComVariant& Set(ByLength& values, WideView text) {
        if (values.size() <= text.size()) {
            values.resize(text.size() + 1);
        }
        CComVariant& value = values[text.size()];
        if (value.vt != VT_BSTR) {
            value.SetText(text);
        } else {
            text.copy(value.bstrVal, text.size());
        }
        return value;
    }

    int Compare(WideView left, WideView right) {
        const CComVariant& leftValue = Set(m_left, left);
        const CComVariant& rightValue = Set(m_right, right);
        if (quillet::EqualIgnoringCase(leftValue, rightValue)) {
            return 0;
        }
        return leftValue > rightValue ? 1 : -1;
    }

    ByLength m_left;
    ByLength m_right;
};

class Sqlite {
public:
    Sqlite() {
        Require(sqlite3_open(":memory:", &m_database) == SQLITE_OK, "SQLite does not open");
        // The encoding of our cells.
        Run("pragma encoding = 'UTF-16'");
        Require(sqlite3_create_collation(m_database, "cells", SQLITE_UTF16, &m_comparison,
                                         Comparison::Compare) == SQLITE_OK,
                "SQLite does not take the collation");
        Run("create table parts (number integer, length real, height real, name text, label text, kind "
            "text)");
        Run("begin");
        sqlite3_stmt* const insert = Prepare("insert into parts values (?, ?, ?, ?, ?, ?)");
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            sqlite3_bind_int(insert, 1, part.m_number);
            sqlite3_bind_double(insert, 2, part.m_length);
            sqlite3_bind_double(insert, 3, part.m_height);
            Bind(insert, 4, part.m_name);
            Bind(insert, 5, part.m_label);
            Bind(insert, 6, part.m_kind);
            Require(sqlite3_step(insert) == SQLITE_DONE, "SQLite does not take a row");
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        Run("commit");
    }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;
    ~Sqlite() { sqlite3_close(m_database); }

    Seen Answer(const Query& query) {
        Seen seen;
        sqlite3_stmt* const statement = Prepare(query.m_sql);
        const int columns = sqlite3_column_count(statement);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int i = 0; i < columns; ++i) {
                switch (sqlite3_column_type(statement, i)) {
                    case SQLITE_INTEGER:
                        seen.Take(sqlite3_column_int(statement, i));
                        break;
                    case SQLITE_FLOAT:
                        seen.Take(sqlite3_column_double(statement, i));
                        break;
                    default: {
                        const void* const text = sqlite3_column_text16(statement, i);
                        seen.Take(Comparison::TextOf(text, sqlite3_column_bytes16(statement, i)));
                        break;
                    }
                }
            }
            ++seen.m_rows;
        }
        Require(sqlite3_finalize(statement) == SQLITE_OK, "SQLite does not answer");
        return seen;
    }

private:
    void Run(const char* sql) {
        Require(sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
    }

    sqlite3_stmt* Prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        Require(sqlite3_prepare_v2(m_database, sql, -1, &statement, nullptr) == SQLITE_OK, sql);
        return statement;
    }

    static void Bind(sqlite3_stmt* insert, int position, const quillet::CString& text) {
        const WideView view = text.View();
        sqlite3_bind_text16(insert, position, view.data(), static_cast<int>(view.size() * sizeof(WCHAR)),
                            SQLITE_TRANSIENT);
    }

    sqlite3* m_database = nullptr;
    Comparison m_comparison;
};

const Query OrderByDouble = {
    "select number, name, length from parts order by length", {Number, Name, Length}, false, {Length}};
const Query OrderByDoubleWithTies = {"select height from parts order by height", {Height}, false, {Height}};
const Query OrderByText = {"select number, name, length from parts order by name collate cells",
                           {Number, Name, Length},
                           false,
                           {Name}};
const Query Distinct6Texts = {"select distinct kind from parts", {Kind}, true, {}};
const Query Distinct20000Texts = {"select distinct label from parts", {Label}, true, {}};
const Query DistinctAllNumbers = {"select distinct number from parts", {Number}, true, {}};
const Query DistinctAllTexts = {"select distinct name from parts", {Name}, true, {}};
const Query DistinctPairs = {"select distinct kind, label from parts", {Kind, Label}, true, {}};

// The side with its table, filled once.
template <typename Side>
Side& Filled() {
    static Side side;
    return side;
}

template <typename Side>
void MeasureAnswer(benchmark::State& state, const Query& query) {
    Measure(
        state, []() -> Side* { return &Filled<Side>(); },
        [&](Side* side) {
            const Seen seen = side->Answer(query);
            Require(seen.m_rows > 0, "no rows");
            return seen;
        });
}

#define QUILLET_QUERY(query)                       \
    void query##Sqlite(benchmark::State& state) {  \
        MeasureAnswer<Sqlite>(state, query);       \
    }                                              \
    void query##Quillet(benchmark::State& state) { \
        MeasureAnswer<Quillet>(state, query);      \
    }                                              \
    QUILLET_BENCHMARK(query##Sqlite);              \
    QUILLET_BENCHMARK(query##Quillet)

QUILLET_QUERY(OrderByDouble);
QUILLET_QUERY(OrderByDoubleWithTies);
QUILLET_QUERY(OrderByText);
QUILLET_QUERY(Distinct6Texts);
QUILLET_QUERY(Distinct20000Texts);
QUILLET_QUERY(DistinctAllNumbers);
QUILLET_QUERY(DistinctAllTexts);
QUILLET_QUERY(DistinctPairs);

// Both sides give the same rows in the same order, or what is measured is not the same.
void Agreement(benchmark::State& state) {
    while (state.KeepRunning()) {
        for (const Query& query : {OrderByDouble, OrderByDoubleWithTies, OrderByText, Distinct6Texts,
                                   Distinct20000Texts, DistinctAllNumbers, DistinctAllTexts, DistinctPairs}) {
            Require(Filled<Quillet>().Answer(query) == Filled<Sqlite>().Answer(query), query.m_sql);
        }
    }
}
BENCHMARK(Agreement)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
