// Queries over a table of a million rows that were read from a catalog file, compared with SQLite with the
// same rows in memory. Both sides take the text of the query and give the selected columns to the caller, who
// reads every value: SQLite row by row, this library in the table of the answer. Each query runs on a table
// of which no row was made, and on one of which every cell was looked at.
#include <Quillet/IQuillet.h>
#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "CellCollation.h"
#include "HeapUse.h"
#include "Measure.h"

namespace {

using bench::Measure;
using bench::Require;
using quillet::platform::WideString;
using quillet::platform::WideView;

constexpr std::uint32_t RowCount = 1000000;
constexpr LONG LabelCount = 20000;

// The values of one row. Factors that are coprime to the number of rows shuffle their order.
struct Part {
    explicit Part(std::uint32_t row)
        : m_number(static_cast<LONG>(std::uint64_t{row} * 7919U % RowCount)),
          m_length(static_cast<double>(std::uint64_t{row} * 611953U % RowCount) / 7),
          m_height(static_cast<double>(row * 2654435761U % HeightCount) / 10.0),
          m_name(std::string(Kinds[row % Kinds.size()]) + " " +
                 std::to_string(std::uint64_t{row} * 104729U % RowCount)),
          m_family(m_number % LabelCount),
          m_label("M " + std::to_string(m_family)),
          m_grade(static_cast<LONG>(row % Kinds.size())),
          m_kind(Kinds[row % Kinds.size()]) {}

    static constexpr std::array<const char*, 6> Kinds = {"sheet", "beam", "Tube", "angle", "flat bar", "rod"};
    static constexpr std::uint32_t HeightCount = 100000;

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

// A query for each side. SQLite compares texts with the comparison of cells, unless its own finds the same.
struct Query {
    const char* m_sql;
    const char* m_sqlite = nullptr;
};

// What the caller has read: the number of rows, and a hash of their values and order.
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

// A catalog file with the table, for as long as the process runs.
class PartsFile {
public:
    PartsFile() : m_path(std::filesystem::temp_directory_path() / "quillet-query-bench.xml") {
        DbDatabase database;
        // The first two tables are the header's.
        database.CreateTable("header", DbTableInfo::Table);
        database.CreateTable("properties", DbTableInfo::Table);
        DbTableInfo* const info = database.CreateTable("parts", DbTableInfo::Table);
        DbTableDescr& descr = *info->GetDescr();
        descr.CreateField("number", false, DbFieldDescr::Long);
        descr.CreateField("length", false, DbFieldDescr::Double);
        descr.CreateField("height", false, DbFieldDescr::Double);
        descr.CreateField("name", false, DbFieldDescr::Text);
        descr.CreateField("family", false, DbFieldDescr::Long);
        descr.CreateField("label", false, DbFieldDescr::Text);
        descr.CreateField("grade", false, DbFieldDescr::Long);
        descr.CreateField("kind", false, DbFieldDescr::Text);
        DbTableData& data = *info->GetData();
        data.AddRows(RowCount);
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            DbTableRow& row = data[i];
            row[0].GetVariant() = part.m_number;
            row[1].GetVariant() = part.m_length;
            row[2].GetVariant() = part.m_height;
            row[3].GetVariant() = part.m_name;
            row[4].GetVariant() = part.m_family;
            row[5].GetVariant() = part.m_label;
            row[6].GetVariant() = part.m_grade;
            row[7].GetVariant() = part.m_kind;
        }
        Require(database.Save(Path()), "not saved");
    }
    PartsFile(const PartsFile&) = delete;
    PartsFile& operator=(const PartsFile&) = delete;
    ~PartsFile() { std::filesystem::remove(m_path); }

    quillet::CString Path() const { return quillet::CString(m_path.u16string()); }

private:
    std::filesystem::path m_path;
};

// Whether all rows of the table were made, by somebody who looked at every cell.
enum class Rows { Unmade, Made };

template <Rows Kind>
class Quillet {
public:
    Quillet() {
        static const PartsFile file;
        m_database.GetSource()->SetFile(file.Path(), true);
        DbTableData& data = *m_database.GetTableData("parts");
        Require(data.size() == RowCount, "not all rows were read");
        Seen seen;
        for (std::uint32_t i = 0; Kind == Rows::Made && i < RowCount; ++i) {
            for (const DbFieldValue* const cell : data[i]) {
                Take(cell->GetValue(), seen);
            }
        }
    }

    Seen Answer(const Query& query) {
        Require(m_database.Query(query.m_sql, m_answer), "the query is not answered");
        DbTableData& answer = *m_database.GetTableData(m_answer);
        Seen seen;
        for (std::size_t i = 0; i < answer.size(); ++i) {
            for (const DbFieldValue* const cell : answer[i]) {
                Take(cell->GetValue(), seen);
            }
            ++seen.m_rows;
        }
        return seen;
    }

    // Deletes the last answer, so that the next one is computed anew. That changes the database, after which
    // the first query looks for changes in all cells; that cost is measured separately.
    void Forget() {
        m_database.DeleteTable(m_answer);
        Require(m_database.Query("select top 1 number from parts where number = 0", m_answer),
                "no first query");
    }

    void Change() { (*m_database.GetTableData("parts"))[0].SetChanged(); }

private:
    static void Take(const CComVariant& value, Seen& seen) {
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

    DbDatabase m_database;
    quillet::CString m_answer;
};

class Sqlite {
public:
    Sqlite() {
        Require(sqlite3_open(":memory:", &m_database) == SQLITE_OK, "SQLite does not open");
        // The encoding of our cells.
        Run("pragma encoding = 'UTF-16'");
        m_collation.AddTo(m_database);
        Run("create table parts (number integer, length real, height real, name text, family integer, "
            "label text, grade integer, kind text)");
        Run("begin");
        sqlite3_stmt* const insert = Prepare("insert into parts values (?, ?, ?, ?, ?, ?, ?, ?)");
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            sqlite3_bind_int(insert, 1, part.m_number);
            sqlite3_bind_double(insert, 2, part.m_length);
            sqlite3_bind_double(insert, 3, part.m_height);
            Bind(insert, 4, part.m_name);
            sqlite3_bind_int(insert, 5, part.m_family);
            Bind(insert, 6, part.m_label);
            sqlite3_bind_int(insert, 7, part.m_grade);
            Bind(insert, 8, part.m_kind);
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
        sqlite3_stmt* const statement = Prepare(query.m_sqlite == nullptr ? query.m_sql : query.m_sqlite);
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
                        seen.Take(bench::CellCollation::TextOf(text, sqlite3_column_bytes16(statement, i)));
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
    bench::CellCollation m_collation;
};

#define COLUMNS "select number, name, length from parts "

constexpr Query NumberIs = {COLUMNS "where height > 5000"};
constexpr Query NumberIsRarely = {COLUMNS "where height < 100"};
// SQLite's fastest comparison without case: ASCII letters only.
constexpr Query TextIs = {COLUMNS "where kind = 'BEAM'", COLUMNS "where kind = 'BEAM' collate nocase"};
constexpr Query TextIsBehind = {COLUMNS "where name > 'flat'", COLUMNS "where name > 'flat' collate cells"};
constexpr Query NumberAndTextAre = {COLUMNS "where height > 5000 and kind = 'BEAM'",
                                    COLUMNS "where height > 5000 and kind = 'BEAM' collate nocase"};
constexpr Query AllFields = {"select * from parts where length > 0.5"};
constexpr Query OrderByNumber = {COLUMNS "order by length"};
constexpr Query OrderByNumberWithTies = {"select height from parts order by height"};
constexpr Query OrderByText = {COLUMNS "order by name", COLUMNS "order by name collate cells"};
constexpr Query DistinctOf6Numbers = {"select distinct grade from parts"};
constexpr Query DistinctOf20000Numbers = {"select distinct family from parts"};
constexpr Query DistinctOfAllNumbers = {"select distinct number from parts"};
constexpr Query DistinctOf6Texts = {"select distinct kind from parts"};
constexpr Query DistinctOf20000Texts = {"select distinct label from parts"};
constexpr Query DistinctOfAllTexts = {"select distinct name from parts"};
constexpr Query DistinctOfPairs = {"select distinct kind, label from parts"};

constexpr const Query* AllQueries[] = {&NumberIs,           &NumberIsRarely,         &TextIs,
                                       &TextIsBehind,       &NumberAndTextAre,       &AllFields,
                                       &OrderByNumber,      &OrderByNumberWithTies,  &OrderByText,
                                       &DistinctOf6Numbers, &DistinctOf20000Numbers, &DistinctOfAllNumbers,
                                       &DistinctOf6Texts,   &DistinctOf20000Texts,   &DistinctOfAllTexts,
                                       &DistinctOfPairs};

// The side with its table, filled once.
template <typename Side>
Side& Filled() {
    static Side side;
    return side;
}

template <typename Side>
void MeasureAnswer(benchmark::State& state, const Query& query) {
    Measure(
        state,
        [] {
            Side& side = Filled<Side>();
            side.Forget();
            return &side;
        },
        [&](Side* side) {
            const Seen seen = side->Answer(query);
            Require(seen.m_rows > 0, "no rows");
            return seen;
        });
}

#define QUILLET_QUERY(query)                                \
    void query##Sqlite(benchmark::State& state) {           \
        MeasureAnswer<Sqlite>(state, query);                \
    }                                                       \
    void query##Quillet(benchmark::State& state) {          \
        MeasureAnswer<Quillet<Rows::Unmade>>(state, query); \
    }                                                       \
    void query##Made(benchmark::State& state) {             \
        MeasureAnswer<Quillet<Rows::Made>>(state, query);   \
    }                                                       \
    QUILLET_BENCHMARK(query##Sqlite);                       \
    QUILLET_BENCHMARK(query##Quillet);                      \
    QUILLET_BENCHMARK(query##Made)

QUILLET_QUERY(NumberIs);
QUILLET_QUERY(NumberIsRarely);
QUILLET_QUERY(TextIs);
QUILLET_QUERY(TextIsBehind);
QUILLET_QUERY(NumberAndTextAre);
QUILLET_QUERY(AllFields);
QUILLET_QUERY(OrderByNumber);
QUILLET_QUERY(OrderByNumberWithTies);
QUILLET_QUERY(OrderByText);
QUILLET_QUERY(DistinctOf6Numbers);
QUILLET_QUERY(DistinctOf20000Numbers);
QUILLET_QUERY(DistinctOfAllNumbers);
QUILLET_QUERY(DistinctOf6Texts);
QUILLET_QUERY(DistinctOf20000Texts);
QUILLET_QUERY(DistinctOfAllTexts);
QUILLET_QUERY(DistinctOfPairs);

// The first query after a cell was changed, which searches all cells for the table's latest change.
void NumberIsRarelyAfterAChange(benchmark::State& state) {
    Measure(
        state,
        [] {
            auto& quillet = Filled<Quillet<Rows::Unmade>>();
            quillet.Forget();
            quillet.Change();
            return &quillet;
        },
        [](Quillet<Rows::Unmade>* side) { return side->Answer(NumberIsRarely); });
}
QUILLET_BENCHMARK(NumberIsRarelyAfterAChange);

// The memory for each row of an answer whose rows are the table's own.
void AllFieldsHeap(benchmark::State& state) {
    auto& quillet = Filled<Quillet<Rows::Unmade>>();
    std::size_t before = 0;
    Seen seen;
    Measure(
        state,
        [&] {
            quillet.Forget();
            before = bench::HeapInUse();
            return &quillet;
        },
        [&](Quillet<Rows::Unmade>* side) {
            seen = side->Answer(AllFields);
            return Seen();
        });
    state.counters["bytes_per_row"] =
        static_cast<double>(bench::HeapInUse() - before) / static_cast<double>(seen.m_rows);
}
QUILLET_BENCHMARK(AllFieldsHeap);

// Verifies that both sides give the same rows in the same order.
void Agreement(benchmark::State& state) {
    while (state.KeepRunning()) {
        for (const Query* const query : AllQueries) {
            const Seen expected = Filled<Sqlite>().Answer(*query);
            Require(Filled<Quillet<Rows::Unmade>>().Answer(*query) == expected, query->m_sql);
            Require(Filled<Quillet<Rows::Made>>().Answer(*query) == expected, query->m_sql);
            Filled<Quillet<Rows::Unmade>>().Forget();
            Filled<Quillet<Rows::Made>>().Forget();
        }
    }
}
BENCHMARK(Agreement)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
