#include "Parts.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "Measure.h"

namespace bench {

namespace {

void Bind(sqlite3_stmt* insert, int position, const quillet::CString& text) {
    const quillet::WideView view = text.View();
    sqlite3_bind_text16(insert, position, view.data(), static_cast<int>(view.size() * sizeof(WCHAR)),
                        SQLITE_TRANSIENT);
}

void SaveParts(const quillet::CString& path) {
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
    data.AddRows(PartCount);
    for (std::uint32_t i = 0; i < PartCount; ++i) {
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
    Require(database.Save(path), "not saved");
}

}  // namespace

quillet::CString PartsFile() {
    const char* const folder = std::getenv("QUILLET_BENCH_DIR");
    const std::filesystem::path path = std::filesystem::path(folder == nullptr ? "." : folder) / "parts.xml";
    quillet::CString name(path.u16string());
    if (!std::filesystem::exists(path)) {
        SaveParts(name);
    }
    return name;
}

void MakeRows(DbTableData& data) {
    for (uint64 i = 0; i < data.size(); ++i) {
        for (const DbFieldValue* const cell : data[i]) {
            benchmark::DoNotOptimize(cell->GetValue().vt);
        }
    }
}

PartsInSqlite::PartsInSqlite() {
    Require(sqlite3_open(":memory:", &m_database) == SQLITE_OK, "SQLite does not open");
    // The encoding of our cells.
    Run("pragma encoding = 'UTF-16'");
    m_collation.AddTo(m_database);
    Run("create table parts (number integer, length real, height real, name text, family integer, "
        "label text, grade integer, kind text)");
    Run("begin");
    sqlite3_stmt* const insert = Prepare("insert into parts values (?, ?, ?, ?, ?, ?, ?, ?)");
    for (std::uint32_t i = 0; i < PartCount; ++i) {
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

void PartsInSqlite::Run(const std::string& sql) {
    Require(sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, sql.c_str());
}

sqlite3_stmt* PartsInSqlite::Prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(m_database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, sql.c_str());
    return statement;
}

}  // namespace bench
