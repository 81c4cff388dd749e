// Growth of a catalog's cost with its tables, its answers and the fields of a table.
#include <Quillet/IQuillet.h>

#include <filesystem>
#include <memory>
#include <string>

#include "Measure.h"

namespace {

using bench::Measure;
using bench::Require;

constexpr const char* FileName = "quillet-many-tables.xml";

// A file with that many tables of one field and one row.
class ManyTables {
public:
    explicit ManyTables(int count) : m_path(std::filesystem::temp_directory_path() / FileName) {
        DbDatabase database;
        for (int i = 0; i < count; ++i) {
            DbTableInfo* const info = database.CreateTable("Table " + std::to_string(i), DbTableInfo::Table);
            info->GetDescr()->CreateField("number", false, DbFieldDescr::Long);
            info->GetData()->AddRow();
        }
        Require(database.Save(Path()), "not saved");
    }
    ManyTables(const ManyTables&) = delete;
    ManyTables& operator=(const ManyTables&) = delete;
    ~ManyTables() { std::filesystem::remove(m_path); }

    // Every table with its rows.
    std::unique_ptr<DbDatabase> Open(bool sequential) const {
        auto database = std::make_unique<DbDatabase>(Path());
        database->GetSource()->SetSequentialAccess(sequential);
        const auto count = static_cast<std::size_t>(database->GetTablesCount());
        for (std::size_t i = 0; i < count; ++i) {
            Require(database->GetTableData(i)->size() == 1, "a row is missing");
        }
        return database;
    }

private:
    quillet::CString Path() const { return quillet::CString(m_path.u16string()); }

    std::filesystem::path m_path;
};

void Open(benchmark::State& state, bool sequential, int count) {
    const ManyTables tables(count);
    Measure(
        state, [] { return nullptr; }, [&](std::nullptr_t) { return tables.Open(sequential); });
}

// A table and that many answers from it.
std::unique_ptr<DbDatabase> WithAnswers(int count) {
    auto database = std::make_unique<DbDatabase>();
    DbTableInfo* const parts = database->CreateTable("parts", DbTableInfo::Table);
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        database->CreateTable("Answer " + number, DbTableInfo::Query,
                              "select number from parts where number = " + number, parts);
    }
    return database;
}

template <typename Run>
void WithAnswers(benchmark::State& state, int count, Run run) {
    Measure(
        state, [=] { return WithAnswers(count); },
        [&](std::unique_ptr<DbDatabase>& database) {
            run(database);
            return nullptr;
        });
}

void CreateFields(benchmark::State& state, int count) {
    Measure(
        state, [] { return std::make_unique<DbTableDescr>(nullptr); },
        [=](const std::unique_ptr<DbTableDescr>& descr) {
            for (int i = 0; i < count; ++i) {
                descr->CreateField("field " + std::to_string(i), false, DbFieldDescr::Long);
            }
            return nullptr;
        });
}

}  // namespace

int main(int count, char** arguments) {
    constexpr int Few = 10000;
    using benchmark::State;
    using Database = std::unique_ptr<DbDatabase>;
    bench::AddGrowth("TablesOpenedWhole", Few, [](State& state, int tables) { Open(state, false, tables); });
    bench::AddGrowth("TablesOpenedSequentially", Few,
                     [](State& state, int tables) { Open(state, true, tables); });
    bench::AddGrowth("AnswersDestroyed", Few, [](State& state, int answers) {
        WithAnswers(state, answers, [](Database& database) { database.reset(); });
    });
    bench::AddGrowth("AnswersDropped", Few, [](State& state, int answers) {
        WithAnswers(state, answers, [](const Database& database) { database->DropAnswers(); });
    });
    bench::AddGrowth("AnswersDeletedWithTheirTable", Few, [](State& state, int answers) {
        WithAnswers(state, answers, [](const Database& database) { database->DeleteTable("parts"); });
    });
    bench::AddGrowth("FieldsCreated", Few, CreateFields);
    bench::RunAdded(count, arguments);
}
