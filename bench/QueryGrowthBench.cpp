// Growth of the cost of queries.
#include <Quillet/IQuillet.h>

#include <memory>
#include <string>
#include <vector>

#include "Growth.h"

namespace {

using bench::Measure;
using bench::Require;

std::unique_ptr<DbDatabase> SmallDatabase() {
    auto database = std::make_unique<DbDatabase>();
    DbTableInfo* const info = database->CreateTable("parts", DbTableInfo::Table);
    info->GetDescr()->CreateField("number", false, DbFieldDescr::Long);
    info->GetDescr()->CreateField("name", false, DbFieldDescr::Text);
    info->GetData()->AddRow();
    return database;
}

template <typename Run>
void MeasureInSmallDatabase(benchmark::State& state, Run run) {
    Measure(state, SmallDatabase, [&](const std::unique_ptr<DbDatabase>& database) {
        run(*database);
        std::vector<quillet::CString> lines;
        database->GetError(lines);
        return lines;
    });
}

// Queries over each other, with edits at the bottom and reads at the top.
void Tower(benchmark::State& state, int levels) {
    constexpr int Edits = 4;
    constexpr int Looks = 500;
    MeasureInSmallDatabase(state, [=](DbDatabase& database) {
        quillet::CString name = "parts";
        for (int i = 0; i < levels; ++i) {
            Require(database.Query("select number from " + name + " where number >= 0", name), "no answer");
        }
        for (int i = 0; i < Edits; ++i) {
            database.GetTableData("parts")->GetRow(0)->SetValue("number", quillet::CComVariant(i));
            Require(database.GetTableData(name)->size() == 1, "no row");
        }
        for (int i = 0; i < Looks; ++i) {
            database.GetTableData(name);
        }
    });
}

// Different texts, each queried twice.
void Texts(benchmark::State& state, int count) {
    MeasureInSmallDatabase(state, [=](DbDatabase& database) {
        for (int i = 0; i < count; ++i) {
            quillet::CString name;
            quillet::CString sql;
            sql.Format("select number from parts where number >= %d", i);
            Require(database.Query(sql, name) && database.Query(sql, name), "no answer");
        }
        database.DeleteTable("parts");
    });
}

std::string Repeated(const char* part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

// One text of many parts.
void Text(benchmark::State& state, const char* begin, const char* part, const char* end, int count) {
    const quillet::CString sql(begin + Repeated(part, count) + end);
    MeasureInSmallDatabase(state, [&](DbDatabase& database) {
        quillet::CString name;
        database.Query(sql, name);
    });
}

QUILLET_GROWTH(QueriesOverQueries, 200, Tower(state, Count));
QUILLET_GROWTH(DifferentTexts, 1000, Texts(state, Count));
QUILLET_GROWTH(Conditions, 10000,
               Text(state, "select name from parts where number=1", " or number=1", "", Count));
QUILLET_GROWTH(Brackets, 50000, Text(state, "select name from parts where ", "(", "number=1", Count));
QUILLET_GROWTH(SelectedFields, 50000, Text(state, "select name", ",number", " from parts", Count));
QUILLET_GROWTH(FromTables, 20000, Text(state, "select name from parts", ",parts", "", Count));
QUILLET_GROWTH(OrderNames, 50000, Text(state, "select name from parts order by name", ",number", "", Count));

}  // namespace

BENCHMARK_MAIN();
