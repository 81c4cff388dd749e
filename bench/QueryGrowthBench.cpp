// Growth of the cost of queries.
#include <Quillet/IQuillet.h>

#include <memory>
#include <string>
#include <vector>

#include "Measure.h"

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
void DifferentTexts(benchmark::State& state, int count) {
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

// A query with a text that repeats a part so many times.
struct RepeatedPart {
    const char* m_name;
    int m_few;
    const char* m_begin;
    const char* m_part;
    const char* m_end;
};

constexpr RepeatedPart Texts[] = {
    {"Conditions", 10000, "select name from parts where number=1", " or number=1", ""},
    {"Brackets", 50000, "select name from parts where ", "(", "number=1"},
    {"SelectedFields", 50000, "select name", ",number", " from parts"},
    {"FromTables", 20000, "select name from parts", ",parts", ""},
    {"OrderNames", 50000, "select name from parts order by name", ",number", ""},
};

}  // namespace

int main(int count, char** arguments) {
    bench::AddGrowth("QueriesOverQueries", 200, Tower);
    bench::AddGrowth("DifferentTexts", 1000, DifferentTexts);
    for (const RepeatedPart& text : Texts) {
        bench::AddGrowth(text.m_name, text.m_few, [&text](benchmark::State& state, int parts) {
            Text(state, text.m_begin, text.m_part, text.m_end, parts);
        });
    }
    bench::RunAdded(count, arguments);
}
