// Catalog files: opening, reading, saving and destroying, compared with pugixml on the same file. Each
// benchmark runs alone in its process.
//
// The catalogs are created once in the folder QUILLET_BENCH_DIR, or in the current one.
#include <Quillet/IQuillet.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#if defined(__unix__)
#include <fcntl.h>
#include <unistd.h>
#endif

#include "CatalogMaker.h"
#include "HeapUse.h"
#include "Measure.h"

namespace {

namespace fs = std::filesystem;
using bench::Measure;
using bench::Require;

constexpr int RowsPerTable = 250000;
constexpr int RowsPerSmallTable = 2500;
constexpr int FirstTableRows = 2500;
constexpr int NumericRows = 100000;
constexpr int Fields = 12;
constexpr std::size_t FirstBodyTable = 2;
constexpr std::size_t LastTable = 5;

std::string InFolder(const std::string& name) {
    const char* const folder = std::getenv("QUILLET_BENCH_DIR");
    return (fs::path(folder == nullptr ? "." : folder) / name).string();
}

template <typename Make>
std::string Catalog(const std::string& name, Make make) {
    const std::string path = InFolder(name);
    if (!fs::exists(path)) {
        make(path + ".part");
        fs::rename(path + ".part", path);
    }
    return path;
}

// 1,000,000 rows by 12 fields in four tables.
std::string PlainCatalog() {
    return Catalog("large.xml", [](const std::string& path) {
        bench::MakeMixedCatalog(path, RowsPerTable, RowsPerTable);
    });
}

// The same number of rows with numbers and texts that take longer.
std::string AwkwardCatalog() {
    return Catalog("awkward.xml", [](const std::string& path) {
        bench::MakeMixedCatalog(path, RowsPerTable, RowsPerTable, bench::Cells::Awkward);
    });
}

// The plain catalog with a last row that makes the reader of rows give up.
std::string OddCatalog() {
    return Catalog("odd.xml",
                   [](const std::string& path) { bench::MakeOddCatalog(path, RowsPerTable, RowsPerTable); });
}

// Two catalogs with the same first table: the rest of the file is long or short.
std::string LongTailCatalog() {
    return Catalog("long-tail.xml", [](const std::string& path) {
        bench::MakeMixedCatalog(path, FirstTableRows, RowsPerTable);
    });
}

std::string ShortTailCatalog() {
    return Catalog("short-tail.xml", [](const std::string& path) {
        bench::MakeMixedCatalog(path, FirstTableRows, RowsPerSmallTable);
    });
}

std::string NumericCatalog() {
    return Catalog("numeric.xml",
                   [](const std::string& path) { bench::MakeNumericCatalog(path, NumericRows); });
}

// A table of so many rows.
std::string CatalogOf(int rows) {
    return Catalog("rows-" + std::to_string(rows) + ".xml",
                   [&](const std::string& path) { bench::MakeMixedCatalog(path, rows, 0); });
}

std::unique_ptr<DbDatabase> Open(const std::string& path, bool sequential) {
    auto database = std::make_unique<DbDatabase>(path);
    database->GetSource()->SetSequentialAccess(sequential);
    return database;
}

std::unique_ptr<DbDatabase> OpenWhole(const std::string& path) {
    auto database = Open(path, false);
    for (std::size_t i = 0; i <= LastTable; ++i) {
        benchmark::DoNotOptimize(database->GetTableData(i)->size());
    }
    return database;
}

std::unique_ptr<pugi::xml_document> Parse(const std::string& path) {
    auto document = std::make_unique<pugi::xml_document>();
    Require(document->load_file(path.c_str()), "pugixml can't read the catalog");
    return document;
}

struct Nothing {};

// The sum of all numbers, and of the hashes of all texts.
struct Sums {
    void Take(double number) { m_numbers += number; }
    void Take(std::string_view text) { m_texts += std::hash<std::string_view>()(text); }
    void Show(benchmark::State& state) const {
        state.counters["numbers"] = m_numbers;
        state.counters["texts"] = static_cast<double>(m_texts >> 12);
    }

    double m_numbers = 0;
    std::uint64_t m_texts = 0;
};

// The first field and the last.
bool IsText(int field) {
    return field == 0 || field == Fields - 1;
}

Sums SumsOf(const pugi::xml_document& document) {
    Sums sums;
    for (const pugi::xml_node table : document.child("database").child("body").child("data")) {
        for (const pugi::xml_node row : table) {
            int field = 0;
            for (const pugi::xml_attribute cell : row.attributes()) {
                if (IsText(field++)) {
                    sums.Take(std::string_view(cell.value()));
                } else {
                    sums.Take(cell.as_double());
                }
            }
        }
    }
    return sums;
}

Sums SumsOfColumns(DbDatabase& database) {
    Sums sums;
    for (std::size_t i = FirstBodyTable; i <= LastTable; ++i) {
        const DbColumnView view = database.GetTableData(i)->GetColumns();
        for (const DbColumnView::Block& block : view.Blocks()) {
            for (std::size_t column = 0; column < view.Columns(); ++column) {
                for (const double number : block.Doubles(column)) {
                    sums.Take(number);
                }
                for (const LONG number : block.Longs(column)) {
                    sums.Take(static_cast<double>(number));
                }
                const DbColumnView::Texts texts = block.TextsOf(column);
                for (std::size_t row = 0; row < texts.size(); ++row) {
                    sums.Take(texts[row]);
                }
            }
        }
    }
    return sums;
}

// Reads every cell as hosts do.
std::size_t ReadCells(DbDatabase& database) {
    std::size_t read = 0;
    for (std::size_t i = FirstBodyTable; i <= LastTable; ++i) {
        DbTableData& data = *database.GetTableData(i);
        const uint64 rows = data.size();
        for (uint64 row = 0; row < rows; ++row) {
            for (const DbFieldValue* const cell : data[row]) {
                const quillet::CComVariant& value = cell->GetValue();
                read += value.vt == VT_BSTR ? value.Text().size() : 1;
            }
        }
    }
    return read;
}

using Path = std::string (*)();

void PugixmlParse(benchmark::State& state, Path path) {
    Measure(state, path, Parse);
}

void PugixmlParseAndSum(benchmark::State& state, Path path) {
    Sums sums;
    Measure(state, path, [&](const std::string& file) {
        auto document = Parse(file);
        sums = SumsOf(*document);
        return document;
    });
    sums.Show(state);
}

void OpenAndSum(benchmark::State& state, Path path) {
    Sums sums;
    Measure(state, path, [&](const std::string& file) {
        auto database = OpenWhole(file);
        sums = SumsOfColumns(*database);
        return database;
    });
    sums.Show(state);
}

void OpenAndReadCells(benchmark::State& state, Path path) {
    Measure(state, path, [](const std::string& file) {
        auto database = OpenWhole(file);
        Require(ReadCells(*database) > 0, "no cells");
        return database;
    });
}

void OpenOdd(benchmark::State& state) {
    Measure(state, OddCatalog, OpenWhole);
}

void SearchMissingPath(benchmark::State& state) {
    Measure(
        state, [] { return std::make_unique<DbSource>(nullptr, PlainCatalog()); },
        [](std::unique_ptr<DbSource>& source) {
            CString text;
            Require(!source->ExtractXmlNode("\\database\\body\\nowhere", text),
                    "a path that is not there was found");
            return Nothing{};
        });
}

void ReachLastTable(benchmark::State& state) {
    Measure(state, PlainCatalog, [](const std::string& path) {
        auto database = Open(path, true);
        Require(database->GetTableData(LastTable)->size() == RowsPerTable, "the last table is not complete");
        return database;
    });
}

void FirstTable(benchmark::State& state, Path path) {
    const std::size_t before = bench::HeapInUse();
    std::size_t after = 0;
    Measure(state, path, [&](const std::string& file) {
        auto database = Open(file, true);
        Require(database->GetTableData(FirstBodyTable)->size() == FirstTableRows,
                "the first table is not complete");
        after = bench::HeapInUse();
        return database;
    });
    state.counters["heap_bytes"] = static_cast<double>(after - before);
}

void NumericCell(benchmark::State& state) {
    const std::string path = NumericCatalog();
    constexpr double Cells = static_cast<double>(NumericRows) * Fields;
    const std::size_t before = bench::HeapInUse();
    const auto database = OpenWhole(path);
    const auto bytes = [&] { return static_cast<double>(bench::HeapInUse() - before) / Cells; };
    const double whole = bytes();
    Measure(
        state, [&] { return database->GetTableData(FirstBodyTable); },
        [](DbTableData* data) {
            data->DeleteRow(NumericRows / 2);
            return Nothing{};
        });
    state.counters["bytes_per_cell"] = whole;
    state.counters["bytes_after_deletion"] = bytes();
}

void Destroy(benchmark::State& state) {
    Measure(
        state, [] { return OpenWhole(PlainCatalog()); },
        [](std::unique_ptr<DbDatabase>& database) {
            database.reset();
            return Nothing{};
        });
}

// What a save has to write before it may say that it succeeded.
void Sync(const std::string& path) {
#if defined(__unix__)
    const int file = open(path.c_str(), O_WRONLY);
    Require(file >= 0 && fsync(file) == 0 && close(file) == 0, "the saved file is not synced");
#endif
}

void PugixmlSave(benchmark::State& state, Path path) {
    Measure(
        state, [&] { return Parse(path()); },
        [](const std::unique_ptr<pugi::xml_document>& document) {
            const std::string saved = InFolder("saved.xml");
            Require(document->save_file(saved.c_str()), "pugixml can't save");
            Sync(saved);
            return Nothing{};
        });
}

void Save(benchmark::State& state, Path path) {
    Measure(
        state, [&] { return OpenWhole(path()); },
        [](const std::unique_ptr<DbDatabase>& database) {
            Require(database->Save(InFolder("saved.xml")), "the catalog can't be saved");
            return Nothing{};
        });
}

void OpenRows(benchmark::State& state, int rows) {
    Measure(
        state, [&] { return CatalogOf(rows); }, [](const std::string& path) { return OpenWhole(path); });
}

void QueryRows(benchmark::State& state, int rows) {
    Measure(
        state, [&] { return OpenWhole(CatalogOf(rows)); },
        [](const std::unique_ptr<DbDatabase>& database) {
            CString name;
            Require(database->Query("select h, name from T0 where b > 5000 order by h", name), "no answer");
            return Nothing{};
        });
}

void SaveRows(benchmark::State& state, int rows) {
    Measure(
        state, [&] { return OpenWhole(CatalogOf(rows)); },
        [](const std::unique_ptr<DbDatabase>& database) {
            Require(database->Save(InFolder("saved.xml")), "the catalog can't be saved");
            return Nothing{};
        });
}

void AddOfCatalogs(const std::string& name, void (*run)(benchmark::State&, Path)) {
    bench::Add(name + "/plain", [=](benchmark::State& state) { run(state, PlainCatalog); });
    bench::Add(name + "/awkward", [=](benchmark::State& state) { run(state, AwkwardCatalog); });
}

void AddOfRows(const std::string& name, void (*run)(benchmark::State&, int)) {
    for (const int rows : {1000, 10000, 100000, 1000000, 4000000}) {
        bench::Add(name + "/" + std::to_string(rows), [=](benchmark::State& state) { run(state, rows); });
    }
}

}  // namespace

int main(int count, char** arguments) {
    AddOfCatalogs("PugixmlParse", PugixmlParse);
    AddOfCatalogs("PugixmlParseAndSum", PugixmlParseAndSum);
    AddOfCatalogs("OpenAndSum", OpenAndSum);
    AddOfCatalogs("OpenAndReadCells", OpenAndReadCells);
    AddOfCatalogs("PugixmlSave", PugixmlSave);
    AddOfCatalogs("Save", Save);
    bench::Add("OpenOdd", OpenOdd);
    bench::Add("SearchMissingPath", SearchMissingPath);
    bench::Add("ReachLastTable", ReachLastTable);
    bench::Add("FirstTable/long", [](benchmark::State& state) { FirstTable(state, LongTailCatalog); });
    bench::Add("FirstTable/short", [](benchmark::State& state) { FirstTable(state, ShortTailCatalog); });
    bench::Add("NumericCell", NumericCell);
    bench::Add("Destroy", Destroy);
    AddOfRows("OpenRows", OpenRows);
    AddOfRows("QueryRows", QueryRows);
    AddOfRows("SaveRows", SaveRows);
    bench::RunAdded(count, arguments);
}
