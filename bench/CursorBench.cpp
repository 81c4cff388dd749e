// A cursor over a table of a million rows that was read from a catalog file, compared with SQLite with the
// same rows in memory. Each side runs in a process of its own: benchmarks named Sqlite; Unmade, on a table of
// which no row has an object; and Made, on one of which every row has.
#include <Quillet/IQuillet.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Measure.h"
#include "Parts.h"

namespace {

using bench::Measure;
using bench::Part;
using bench::Require;

// A condition in our dialect and in SQL that only the last row meets.
struct Condition {
    std::string m_quillet;
    std::string m_sql;
};

Condition LengthOfTheLastRow() {
    // The lengths differ by a seventh.
    const double length = Part(bench::PartCount - 1).m_length;
    const std::string text =
        "length > " + std::to_string(length - 0.1) + " and length < " + std::to_string(length + 0.1);
    return {text, text};
}

Condition NameOfTheLastRow() {
    const std::string text = "name = '" + Part(bench::PartCount - 1).m_name.ToUtf8() + "'";
    return {text, text + " collate nocase"};
}

// A hash of all positions in their order.
struct Order {
    void Take(std::uint64_t position) { m_mixed += position * (2 * m_rows++ + 1); }
    void Show(benchmark::State& state) const {
        state.counters["rows"] = static_cast<double>(m_rows);
        state.counters["hash"] = static_cast<double>(m_mixed >> 12);
    }

    std::uint64_t m_rows = 0;
    std::uint64_t m_mixed = 0;
};

enum class Rows { Unmade, Made };

template <Rows Kind>
class Quillet {
public:
    Quillet() : m_database(bench::PartsFile()), m_cursor(&m_database) {
        if (Kind == Rows::Made) {
            bench::MakeRows(*m_database.GetTableData("parts"));
        }
        for (const char* const field : {"length", "name"}) {
            Require(m_database.GetTableDescr("parts")->CreateIndex(field, field), "no index");
        }
        Require(m_cursor.Open("parts"), "no cursor");
    }

    void DropIndex() { m_cursor.SetCurrentIndex(nullptr); }
    void MakeIndex(const char* field) { Require(m_cursor.SetCurrentIndex(field), "no index"); }

    // The stored positions of all rows in the order of the index.
    Order ShowOrder(const char*) {
        Order order;
        for (std::uint32_t i = 0; i < bench::PartCount; ++i) {
            order.Take(m_cursor.RemapRowIndex(i));
        }
        return order;
    }

    // The position of the only row that meets the condition.
    std::uint64_t Find(const Condition& condition) {
        Require(m_cursor.FindFirst(condition.m_quillet.c_str()), "nothing found");
        return static_cast<std::uint64_t>(m_cursor.GetAbsolutePosition());
    }

private:
    DbDatabase m_database;
    DbRecordset m_cursor;
};

class Sqlite {
public:
    void DropIndex() { m_database.Run("drop index if exists current"); }
    void MakeIndex(const std::string& field) {
        m_database.Run("create index current on parts (" + field + CollationOf(field) + ")");
    }

    Order ShowOrder(const std::string& field) {
        Order order;
        ForEach("select rowid - 1 from parts order by " + field + CollationOf(field),
                [&](std::uint64_t position) { order.Take(position); });
        return order;
    }

    std::uint64_t Find(const Condition& condition) {
        std::uint64_t found = 0;
        ForEach("select rowid - 1 from parts where " + condition.m_sql,
                [&](std::uint64_t position) { found = position; });
        return found;
    }

private:
    static std::string CollationOf(const std::string& field) {
        return field == "name" ? " collate cells" : "";
    }

    template <typename Take>
    void ForEach(const std::string& sql, Take take) {
        sqlite3_stmt* const statement = m_database.Prepare(sql);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            take(static_cast<std::uint64_t>(sqlite3_column_int64(statement, 0)));
        }
        Require(sqlite3_finalize(statement) == SQLITE_OK, "SQLite does not answer");
    }

    bench::PartsInSqlite m_database;
};

using Unmade = Quillet<Rows::Unmade>;
using Made = Quillet<Rows::Made>;

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
    Filled<Side>().ShowOrder(field).Show(state);
    Filled<Side>().DropIndex();
}

template <typename Side>
void MeasureFind(benchmark::State& state, const Condition& condition) {
    Measure(
        state, []() -> Side* { return &Filled<Side>(); },
        [&](Side* side) {
            const std::uint64_t position = side->Find(condition);
            Require(position == bench::PartCount - 1, "another row found");
            return position;
        });
}

template <typename Side>
void AddSide(const std::string& side) {
    bench::Add(side + "/IndexByDouble", [](benchmark::State& state) { MeasureIndex<Side>(state, "length"); });
    bench::Add(side + "/IndexByText", [](benchmark::State& state) { MeasureIndex<Side>(state, "name"); });
    bench::Add(side + "/FindNumber",
               [](benchmark::State& state) { MeasureFind<Side>(state, LengthOfTheLastRow()); });
    bench::Add(side + "/FindText",
               [](benchmark::State& state) { MeasureFind<Side>(state, NameOfTheLastRow()); });
}

}  // namespace

int main(int count, char** arguments) {
    AddSide<Sqlite>("Sqlite");
    AddSide<Unmade>("Unmade");
    AddSide<Made>("Made");
    bench::RunAdded(count, arguments);
}
