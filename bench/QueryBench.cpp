// Queries over a table of a million rows that was read from a catalog file, compared with SQLite with the
// same rows in memory. Both sides take the text of the query and give the selected columns to the caller, who
// reads every value: SQLite row by row, this library in the table of the answer, cell by cell or by a column
// view. The answer is dropped before the next query.
//
// Each side runs in a process of its own: benchmarks named Sqlite; Cells and Columns, on a table of which no
// row has an object; and Made, cell by cell on a table of which every row has one.
#include <Quillet/IQuillet.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "HeapUse.h"
#include "Measure.h"
#include "Parts.h"

namespace {

using bench::Measure;
using bench::Require;
using quillet::platform::WideView;

// A query for each side. SQLite compares texts with the comparison of cells, unless its own finds the same.
struct Query {
    const char* m_name;
    const char* m_sql;
    const char* m_sqlite = nullptr;
};

// What the caller has read: the number of rows, and a hash of their values and order.
struct Seen {
    void Take(std::size_t row, std::size_t column, double value) {
        m_mixed += static_cast<std::uint64_t>(value * 64) * (2 * row + 1) * (2 * column + 1);
    }
    // Plain texts are as long in UTF-8 as in UTF-16.
    template <typename Text>
    void TakeText(std::size_t row, std::size_t column, Text text) {
        const double last = text.empty() ? 0 : static_cast<double>(text.back());
        Take(row, column, static_cast<double>(text.size()) * 256 + last);
    }

    friend bool operator==(const Seen&, const Seen&) = default;

    std::size_t m_rows = 0;
    std::uint64_t m_mixed = 0;
};

Seen ReadCells(DbTableData& answer) {
    Seen seen;
    seen.m_rows = answer.size();
    for (std::size_t row = 0; row < seen.m_rows; ++row) {
        std::size_t column = 0;
        for (const DbFieldValue* const cell : answer[row]) {
            const quillet::CComVariant& value = cell->GetValue();
            switch (value.vt) {
                case VT_I4:
                    seen.Take(row, column, value.lVal);
                    break;
                case VT_R8:
                    seen.Take(row, column, value.dblVal);
                    break;
                default:
                    seen.TakeText(row, column, value.Text());
                    break;
            }
            ++column;
        }
    }
    return seen;
}

Seen ReadColumns(DbTableData& answer) {
    const DbColumnView view = answer.GetColumns();
    Seen seen;
    seen.m_rows = view.Rows();
    for (const DbColumnView::Block& block : view.Blocks()) {
        for (std::size_t column = 0; column < view.Columns(); ++column) {
            std::size_t row = block.FirstRow();
            for (const double number : block.Doubles(column)) {
                seen.Take(row++, column, number);
            }
            for (const LONG number : block.Longs(column)) {
                seen.Take(row++, column, static_cast<double>(number));
            }
            const DbColumnView::Texts texts = block.TextsOf(column);
            for (std::size_t i = 0; i < texts.size(); ++i) {
                seen.TakeText(row++, column, texts[i]);
            }
        }
    }
    return seen;
}

// Whether all rows of the table have objects.
enum class Rows { Unmade, Made };

template <Rows Kind, Seen (*Read)(DbTableData&)>
class Quillet {
public:
    Quillet() : m_database(bench::PartsFile()) {
        DbTableData& data = *m_database.GetTableData("parts");
        Require(data.size() == bench::PartCount, "not all rows were read");
        if (Kind == Rows::Made) {
            bench::MakeRows(data);
        }
    }

    Seen Answer(const Query& query) {
        Require(m_database.Query(query.m_sql, m_answer), "the query is not answered");
        return Read(*m_database.GetTableData(m_answer));
    }

    // Drops the last answer, so that the next one is computed anew; the first query after that is a small
    // one.
    void Forget() {
        Drop();
        Require(m_database.Query("select top 1 number from parts where number = 0", m_answer),
                "no first query");
    }
    void Drop() { m_database.DropAnswers(); }
    void Change() { m_database.GetTableData("parts")->GetRow(0)->SetChanged(); }

private:
    DbDatabase m_database;
    quillet::CString m_answer;
};

class Sqlite {
public:
    Seen Answer(const Query& query) {
        Seen seen;
        sqlite3_stmt* const statement =
            m_database.Prepare(query.m_sqlite == nullptr ? query.m_sql : query.m_sqlite);
        const int columns = sqlite3_column_count(statement);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int i = 0; i < columns; ++i) {
                const auto column = static_cast<std::size_t>(i);
                switch (sqlite3_column_type(statement, i)) {
                    case SQLITE_INTEGER:
                        seen.Take(seen.m_rows, column, sqlite3_column_int(statement, i));
                        break;
                    case SQLITE_FLOAT:
                        seen.Take(seen.m_rows, column, sqlite3_column_double(statement, i));
                        break;
                    default: {
                        const void* const text = sqlite3_column_text16(statement, i);
                        const int bytes = sqlite3_column_bytes16(statement, i);
                        seen.TakeText(seen.m_rows, column, bench::CellCollation::TextOf(text, bytes));
                        break;
                    }
                }
            }
            ++seen.m_rows;
        }
        Require(sqlite3_finalize(statement) == SQLITE_OK, "SQLite does not answer");
        return seen;
    }

    void Forget() {}

private:
    bench::PartsInSqlite m_database;
};

using Cells = Quillet<Rows::Unmade, ReadCells>;
using Columns = Quillet<Rows::Unmade, ReadColumns>;
using Made = Quillet<Rows::Made, ReadCells>;

// The side with its table, filled once.
template <typename Side>
Side& Filled() {
    static Side side;
    return side;
}

template <typename Side>
void MeasureAnswer(benchmark::State& state, const Query& query) {
    Seen seen;
    Measure(
        state,
        [] {
            Side& side = Filled<Side>();
            side.Forget();
            return &side;
        },
        [&](Side* side) {
            seen = side->Answer(query);
            Require(seen.m_rows > 0, "no rows");
            return seen;
        });
    // As far as a double counts.
    state.counters["rows"] = static_cast<double>(seen.m_rows);
    state.counters["hash"] = static_cast<double>(seen.m_mixed >> 12);
}

#define COLUMNS "select number, name, length from parts "

constexpr Query NumberIsRarely = {"NumberIsRarely", COLUMNS "where height < 100"};
constexpr Query AllFields = {"AllFields", "select * from parts where length > 0.5"};

constexpr Query AllQueries[] = {
    {"NumberIs", COLUMNS "where height > 5000"},
    NumberIsRarely,
    // SQLite's fastest comparison without case: ASCII letters only.
    {"TextIs", COLUMNS "where kind = 'BEAM'", COLUMNS "where kind = 'BEAM' collate nocase"},
    {"TextIsAfter", COLUMNS "where name > 'flat'", COLUMNS "where name > 'flat' collate cells"},
    {"NumberAndTextAre", COLUMNS "where height > 5000 and kind = 'BEAM'",
     COLUMNS "where height > 5000 and kind = 'BEAM' collate nocase"},
    {"OrderByNumber", COLUMNS "order by length"},
    {"OrderByNumberWithTies", "select height from parts order by height"},
    {"OrderByText", COLUMNS "order by name", COLUMNS "order by name collate cells"},
    {"DistinctOf6Numbers", "select distinct grade from parts"},
    {"DistinctOf20000Numbers", "select distinct family from parts"},
    {"DistinctOfAllNumbers", "select distinct number from parts"},
    {"DistinctOf6Texts", "select distinct kind from parts"},
    {"DistinctOf20000Texts", "select distinct label from parts"},
    {"DistinctOfAllTexts", "select distinct name from parts"},
    {"DistinctOfPairs", "select distinct kind, label from parts"},
    // The last, since its rows are those of the table: read cell by cell, they all get objects.
    AllFields,
};

// A query while nothing has changed since the last one, and the first after a change of the table, whose
// answers are gone before.
template <typename Side>
void AfterAChange(benchmark::State& state, bool isChanged) {
    Measure(
        state,
        [&] {
            Side& side = Filled<Side>();
            side.Forget();
            if (isChanged) {
                side.Change();
            }
            return &side;
        },
        [](Side* side) { return side->Answer(NumberIsRarely); });
}
// The memory for each row of an answer whose rows are the table's own.
void AllFieldsHeap(benchmark::State& state) {
    auto& quillet = Filled<Columns>();
    std::size_t before = 0;
    Seen seen;
    Measure(
        state,
        [&] {
            quillet.Forget();
            before = bench::HeapInUse();
            return &quillet;
        },
        [&](Columns* side) {
            seen = side->Answer(AllFields);
            return Seen();
        });
    state.counters["bytes_per_row"] =
        static_cast<double>(bench::HeapInUse() - before) / static_cast<double>(seen.m_rows);
}
template <typename Side>
void AddSide(const std::string& side) {
    for (const Query& query : AllQueries) {
        bench::Add(side + "/" + query.m_name,
                   [&query](benchmark::State& state) { MeasureAnswer<Side>(state, query); });
    }
}

template <typename Side>
void AddChanges(const std::string& side) {
    for (const bool isChanged : {false, true}) {
        bench::Add(side + (isChanged ? "/AfterAChange" : "/WithoutAChange"),
                   [=](benchmark::State& state) { AfterAChange<Side>(state, isChanged); });
    }
}

}  // namespace

int main(int count, char** arguments) {
    AddChanges<Cells>("Cells");
    AddChanges<Made>("Made");
    AddSide<Sqlite>("Sqlite");
    AddSide<Cells>("Cells");
    AddSide<Columns>("Columns");
    AddSide<Made>("Made");
    bench::Add("Columns/AllFieldsHeap", AllFieldsHeap);
    bench::RunAdded(count, arguments);
}
