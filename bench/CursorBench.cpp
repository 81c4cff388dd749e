// A cursor over a table of a million rows, compared with SQLite with the same rows in memory.
#include <Quillet/IQuillet.h>
#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CellCollation.h"
#include "Measure.h"

namespace {

using bench::Measure;
using bench::Require;

constexpr std::uint32_t RowCount = 1000000;

// The values of one row, each different from those of all others. Factors that are coprime to the number of
// rows shuffle their order.
struct Part {
    explicit Part(std::uint32_t row)
        : m_length(static_cast<double>(std::uint64_t{row} * 611953U % RowCount) / 7),
          m_name("Beam " + std::to_string(std::uint64_t{row} * 104729U % RowCount)) {}

    double m_length;
    quillet::CString m_name;
};

// A condition in our dialect and in SQL that only the last row meets.
struct Condition {
    std::string m_quillet;
    std::string m_sql;
};

Condition LengthOfTheLastRow() {
    // The lengths differ by a seventh.
    const double length = Part(RowCount - 1).m_length;
    const std::string text =
        "length > " + std::to_string(length - 0.1) + " and length < " + std::to_string(length + 0.1);
    return {text, text};
}

Condition NameOfTheLastRow() {
    const std::string text = "name = '" + Part(RowCount - 1).m_name.ToUtf8() + "'";
    return {text, text + " collate nocase"};
}

class Quillet {
public:
    Quillet() : m_cursor(&m_database) {
        DbTableInfo* const info = m_database.CreateTable("parts", DbTableInfo::Table);
        info->GetDescr()->CreateField("length", false, DbFieldDescr::Double);
        info->GetDescr()->CreateField("name", false, DbFieldDescr::Text);
        info->GetDescr()->CreateIndex("length", "length");
        info->GetDescr()->CreateIndex("name", "name");
        DbTableData& data = *info->GetData();
        data.AddRows(RowCount);
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            data[i][0].GetVariant() = part.m_length;
            data[i][1].GetVariant() = part.m_name;
        }
        Require(m_cursor.Open("parts"), "no cursor");
    }

    void DropIndex() { m_cursor.SetCurrentIndex(nullptr); }
    void MakeIndex(const char* field) { Require(m_cursor.SetCurrentIndex(field), "no index"); }

    // The stored positions of all rows in the order of the index.
    std::vector<std::uint64_t> Order(const char* field) {
        DropIndex();
        MakeIndex(field);
        std::vector<std::uint64_t> order(RowCount);
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            order[i] = m_cursor.RemapRowIndex(i);
        }
        return order;
    }

    // The position of the only row that meets the condition.
    std::uint64_t Find(const Condition& condition) {
        DropIndex();
        Require(m_cursor.FindFirst(condition.m_quillet.c_str()), "nothing found");
        return static_cast<std::uint64_t>(m_cursor.GetAbsolutePosition());
    }

private:
    DbDatabase m_database;
    DbRecordset m_cursor;
};

class Sqlite {
public:
    Sqlite() {
        Require(sqlite3_open(":memory:", &m_database) == SQLITE_OK, "SQLite does not open");
        // The encoding of our cells.
        Run("pragma encoding = 'UTF-16'");
        m_collation.AddTo(m_database);
        Run("create table parts (length real, name text)");
        Run("begin");
        sqlite3_stmt* const insert = Prepare("insert into parts values (?, ?)");
        for (std::uint32_t i = 0; i < RowCount; ++i) {
            const Part part(i);
            const quillet::WideView name = part.m_name.View();
            sqlite3_bind_double(insert, 1, part.m_length);
            sqlite3_bind_text16(insert, 2, name.data(), static_cast<int>(name.size() * sizeof(WCHAR)),
                                SQLITE_TRANSIENT);
            Require(sqlite3_step(insert) == SQLITE_DONE, "SQLite does not take a row");
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        Run("commit");
    }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;
    ~Sqlite() { sqlite3_close(m_database); }

    void DropIndex() { Run("drop index if exists current"); }
    void MakeIndex(const std::string& field) {
        Run("create index current on parts (" + field + (field == "name" ? " collate cells)" : ")"));
    }

    std::vector<std::uint64_t> Order(const std::string& field) {
        DropIndex();
        MakeIndex(field);
        return Positions("select rowid - 1 from parts order by " + field +
                         (field == "name" ? " collate cells" : ""));
    }

    std::uint64_t Find(const Condition& condition) {
        DropIndex();
        const auto found = Positions("select rowid - 1 from parts where " + condition.m_sql);
        Require(found.size() == 1, "not one row found");
        return found.front();
    }

private:
    void Run(const std::string& sql) {
        Require(sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, sql.c_str());
    }

    sqlite3_stmt* Prepare(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        Require(sqlite3_prepare_v2(m_database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK,
                sql.c_str());
        return statement;
    }

    std::vector<std::uint64_t> Positions(const std::string& sql) {
        std::vector<std::uint64_t> positions;
        sqlite3_stmt* const statement = Prepare(sql);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            positions.push_back(static_cast<std::uint64_t>(sqlite3_column_int64(statement, 0)));
        }
        Require(sqlite3_finalize(statement) == SQLITE_OK, "SQLite does not answer");
        return positions;
    }

    bench::CellCollation m_collation;
    sqlite3* m_database = nullptr;
};

// The side with its table, filled once.
template <typename Side>
Side& Filled() {
    static Side side;
    return side;
}

template <typename Side>
void MeasureIndex(benchmark::State& state, const char* field) {
    Measure(
        state,
        []() -> Side* {
            Filled<Side>().DropIndex();
            return &Filled<Side>();
        },
        [&](Side* side) {
            side->MakeIndex(field);
            return 0;
        });
}

template <typename Side>
void MeasureFind(benchmark::State& state, const Condition& condition) {
    Measure(
        state, []() -> Side* { return &Filled<Side>(); },
        [&](Side* side) {
            const std::uint64_t position = side->Find(condition);
            Require(position == RowCount - 1, "another row found");
            return position;
        });
}

#define QUILLET_BESIDE_SQLITE(name, measure, subject) \
    void name##Sqlite(benchmark::State& state) {      \
        measure<Sqlite>(state, subject);              \
    }                                                 \
    void name##Quillet(benchmark::State& state) {     \
        measure<Quillet>(state, subject);             \
    }                                                 \
    QUILLET_BENCHMARK(name##Sqlite);                  \
    QUILLET_BENCHMARK(name##Quillet)

QUILLET_BESIDE_SQLITE(IndexByDouble, MeasureIndex, "length");
QUILLET_BESIDE_SQLITE(IndexByText, MeasureIndex, "name");
QUILLET_BESIDE_SQLITE(FindNumber, MeasureFind, LengthOfTheLastRow());
QUILLET_BESIDE_SQLITE(FindText, MeasureFind, NameOfTheLastRow());

// Verifies that both sides put the rows in the same order.
void CursorAgreement(benchmark::State& state) {
    while (state.KeepRunning()) {
        for (const char* const field : {"length", "name"}) {
            Require(Filled<Quillet>().Order(field) == Filled<Sqlite>().Order(field), field);
        }
    }
}
BENCHMARK(CursorAgreement)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
