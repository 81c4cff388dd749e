// Reading an Access file whole, compared with direct calls of its driver for the same two passes over each
// table: one that counts the rows, and one that takes every cell.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include "Measure.h"
#include "Quillet/IQuillet.h"
#include "Quillet/platform/Odbc.h"

namespace {

using bench::Measure;
using bench::Require;
using quillet::WideString;

// The file that bench/run.sh names.
std::string AccessFile() {
    const char* path = std::getenv("QUILLET_BENCH_ACCESS_FILE");
    return path == nullptr ? "" : path;
}

void Check(SQLRETURN result) {
    Require(SQL_SUCCEEDED(result), "the driver failed");
}

// A statement handle that is freed.
class Statement {
public:
    explicit Statement(SQLHDBC connection) { Check(SQLAllocHandle(SQL_HANDLE_STMT, connection, &m_handle)); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, m_handle); }

    SQLHSTMT Get() const { return m_handle; }

private:
    SQLHSTMT m_handle = nullptr;
};

std::vector<WideString> TablesOf(SQLHDBC connection) {
    const Statement statement(connection);
    Check(SQLTablesW(statement.Get(), nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0));
    std::vector<WideString> names;
    while (SQL_SUCCEEDED(SQLFetch(statement.Get()))) {
        SQLWCHAR name[256] = {};
        SQLWCHAR type[256] = {};
        SQLLEN length = 0;
        Check(SQLGetData(statement.Get(), 3, SQL_C_WCHAR, name, sizeof(name), &length));
        Check(SQLGetData(statement.Get(), 4, SQL_C_WCHAR, type, sizeof(type), &length));
        if (WideString(type) == OLESTR("TABLE")) {
            names.emplace_back(name);
        }
    }
    return names;
}

void Select(SQLHSTMT statement, const WideString& table) {
    WideString text = OLESTR("SELECT * FROM [") + table + OLESTR("]");
    Check(SQLExecDirectW(statement, text.data(), static_cast<SQLINTEGER>(text.size())));
}

int CountRows(SQLHDBC connection, const WideString& table) {
    const Statement statement(connection);
    Select(statement.Get(), table);
    int count = 0;
    while (SQL_SUCCEEDED(SQLFetch(statement.Get()))) {
        ++count;
    }
    return count;
}

// Every cell in its own type, into the same buffer.
std::size_t TakeCells(SQLHDBC connection, const WideString& table) {
    const Statement statement(connection);
    Select(statement.Get(), table);
    SQLSMALLINT columns = 0;
    Check(SQLNumResultCols(statement.Get(), &columns));
    std::vector<SQLSMALLINT> types;
    for (SQLSMALLINT column = 1; column <= columns; ++column) {
        SQLWCHAR name[256] = {};
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLULEN size = 0;
        SQLSMALLINT scale = 0;
        SQLSMALLINT nullable = 0;
        Check(SQLDescribeColW(statement.Get(), static_cast<SQLUSMALLINT>(column), name, 256, &length, &type,
                              &size, &scale, &nullable));
        types.push_back(type == SQL_DOUBLE ? SQL_C_DOUBLE : SQL_C_WCHAR);
    }
    std::size_t cells = 0;
    alignas(double) char buffer[4096];
    while (SQL_SUCCEEDED(SQLFetch(statement.Get()))) {
        for (SQLSMALLINT column = 1; column <= columns; ++column) {
            SQLLEN length = 0;
            Check(SQLGetData(statement.Get(), static_cast<SQLUSMALLINT>(column),
                             types[static_cast<std::size_t>(column - 1)], buffer, sizeof(buffer), &length));
            benchmark::DoNotOptimize(buffer);
            ++cells;
        }
    }
    return cells;
}

std::size_t ReadWithBareCalls() {
    SQLHENV environment = nullptr;
    SQLHDBC connection = nullptr;
    Check(SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment));
    Check(SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0));
    Check(SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection));
    std::string text = "DBQ=" + AccessFile() + ";Driver={Microsoft Access Driver (*.mdb)}";
    Check(SQLDriverConnect(connection, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr, 0,
                           nullptr, SQL_DRIVER_NOPROMPT));
    std::size_t cells = 0;
    for (const WideString& table : TablesOf(connection)) {
        benchmark::DoNotOptimize(CountRows(connection, table));
        cells += TakeCells(connection, table);
    }
    SQLDisconnect(connection);
    SQLFreeHandle(SQL_HANDLE_DBC, connection);
    SQLFreeHandle(SQL_HANDLE_ENV, environment);
    return cells;
}

DBACCESS_ALL ReadTables() {
    DBACCESS access(CString(AccessFile()).GetString());
    std::vector<CString> names;
    access.GetTables(names);
    DBACCESS_ALL tables(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        tables[i].first = names[i];
        Require(access.GetTableData(names[i], tables[i].second), "a table can't be read");
    }
    return tables;
}

std::size_t CellsOf(const DBACCESS_ALL& tables) {
    std::size_t cells = 0;
    for (const auto& [name, rows] : tables) {
        for (const DBACCESS_RECORD& row : rows) {
            cells += row.size();
        }
    }
    return cells;
}

template <typename Read>
void MeasureReading(benchmark::State& state, Read read) {
    Measure(
        state, [] { return 0; }, [&](int) { return read(); });
}

}  // namespace

int main(int count, char** arguments) {
    bench::Add("AccessBare", [](benchmark::State& state) { MeasureReading(state, ReadWithBareCalls); });
    bench::Add("AccessQuillet", [](benchmark::State& state) { MeasureReading(state, ReadTables); });
    // Both take every cell.
    bench::Add("AccessAgreement", [](benchmark::State& state) {
        MeasureReading(state, [] {
            const std::size_t cells = ReadWithBareCalls();
            Require(cells > 0 && CellsOf(ReadTables()) == cells, "the two readings differ");
            return cells;
        });
    });
    bench::RunAdded(count, arguments);
}
