// Catalog files: opening, reading, saving and destroying, compared with pugixml on the same file.
//
// The catalogs are created once in the folder QUILLET_BENCH_DIR, or in the current one.
#include <Quillet/IQuillet.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <pugixml.hpp>

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
constexpr int NumericFields = 12;
constexpr std::size_t FirstBodyTable = 2;
constexpr std::size_t LastTable = 5;

std::string Folder() {
    const char* const folder = std::getenv("QUILLET_BENCH_DIR");
    return folder == nullptr ? std::string(".") : folder;
}

template <typename Make>
std::string Catalog(const std::string& name, Make make) {
    const std::string path = (fs::path(Folder()) / name).string();
    if (!fs::exists(path)) {
        make(path + ".part");
        fs::rename(path + ".part", path);
    }
    return path;
}

// 1,000,000 rows by 12 fields in four tables.
std::string LargeCatalog() {
    return Catalog("large.xml", [](const std::string& path) {
        bench::MakeMixedCatalog(path, RowsPerTable, RowsPerTable);
    });
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

struct Nothing {};

void PugixmlParse(benchmark::State& state) {
    Measure(
        state, [] { return LargeCatalog(); },
        [](const std::string& path) {
            auto document = std::make_unique<pugi::xml_document>();
            Require(document->load_file(path.c_str()), "pugixml can't read the catalog");
            return document;
        });
}

void OpenWholeAndParse(benchmark::State& state) {
    Measure(
        state, [] { return LargeCatalog(); }, [](const std::string& path) { return OpenWhole(path); });
}

void SearchMissingPath(benchmark::State& state) {
    Measure(
        state, [] { return std::make_unique<DbSource>(nullptr, LargeCatalog()); },
        [](std::unique_ptr<DbSource>& source) {
            CString text;
            Require(!source->ExtractXmlNode("\\database\\body\\nowhere", text),
                    "a path that is not there was found");
            return Nothing{};
        });
}

void ReachLastTable(benchmark::State& state) {
    Measure(
        state, [] { return LargeCatalog(); },
        [](const std::string& path) {
            auto database = Open(path, true);
            Require(database->GetTableData(LastTable)->size() == RowsPerTable,
                    "the last table is not complete");
            return database;
        });
}

void FirstTable(benchmark::State& state, const std::string& path) {
    Measure(
        state, [&] { return path; },
        [](const std::string& file) {
            auto database = Open(file, true);
            Require(database->GetTableData(FirstBodyTable)->size() == FirstTableRows,
                    "the first table is not complete");
            return database;
        });
    const std::size_t before = bench::HeapInUse();
    auto database = Open(path, true);
    benchmark::DoNotOptimize(database->GetTableData(FirstBodyTable)->size());
    state.counters["heap_bytes"] = static_cast<double>(bench::HeapInUse() - before);
}

void FirstTableLongTail(benchmark::State& state) {
    FirstTable(state, LongTailCatalog());
}

void FirstTableShortTail(benchmark::State& state) {
    FirstTable(state, ShortTailCatalog());
}

void NumericCell(benchmark::State& state) {
    Measure(
        state, [] { return NumericCatalog(); }, [](const std::string& path) { return OpenWhole(path); });
    const std::size_t before = bench::HeapInUse();
    const auto database = OpenWhole(NumericCatalog());
    state.counters["bytes_per_cell"] =
        static_cast<double>(bench::HeapInUse() - before) / (static_cast<double>(NumericRows) * NumericFields);
}

void Destroy(benchmark::State& state) {
    Measure(
        state, [] { return OpenWhole(LargeCatalog()); },
        [](std::unique_ptr<DbDatabase>& database) {
            database.reset();
            return Nothing{};
        });
}

void PugixmlSave(benchmark::State& state) {
    Measure(
        state,
        [] {
            auto document = std::make_unique<pugi::xml_document>();
            Require(document->load_file(LargeCatalog().c_str()), "pugixml can't read the catalog");
            return document;
        },
        [](std::unique_ptr<pugi::xml_document>& document) {
            const std::string path = (fs::path(Folder()) / "saved.xml").string();
            Require(document->save_file(path.c_str()), "pugixml can't save");
            return Nothing{};
        });
}

void Save(benchmark::State& state) {
    Measure(
        state, [] { return OpenWhole(LargeCatalog()); },
        [](std::unique_ptr<DbDatabase>& database) {
            const std::string path = (fs::path(Folder()) / "saved.xml").string();
            Require(database->Save(path), "the catalog can't be saved");
            return Nothing{};
        });
}

QUILLET_BENCHMARK(PugixmlParse);
QUILLET_BENCHMARK(OpenWholeAndParse);
QUILLET_BENCHMARK(SearchMissingPath);
QUILLET_BENCHMARK(ReachLastTable);
QUILLET_BENCHMARK(FirstTableLongTail);
QUILLET_BENCHMARK(FirstTableShortTail);
QUILLET_BENCHMARK(NumericCell);
QUILLET_BENCHMARK(Destroy);
QUILLET_BENCHMARK(PugixmlSave);
QUILLET_BENCHMARK(Save);

}  // namespace

BENCHMARK_MAIN();
