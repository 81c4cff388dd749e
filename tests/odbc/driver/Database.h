// The one table of a database in memory, and what was asked of the driver about it.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace memory_driver {

// Why a call fails: a state of ODBC and a text.
struct Failure {
    std::string m_state;
    std::string m_text;
};

// What a connect string says, by keywords in lower case.
using Settings = std::map<std::string, std::string>;
Settings ParseConnectString(const std::string& text);
// Empty where the keyword is missing.
std::string Setting(const Settings& settings, const std::string& keyword);

struct Column {
    enum class Type { Integer, Text, LongText };

    std::string m_name;
    Type m_type = Type::Text;
    // Digits or characters.
    std::size_t m_size = 0;
};

// Digits or ASCII; nothing for a NULL.
using Cell = std::optional<std::string>;
using Cells = std::vector<Cell>;

// Rows by their keys, which nobody sees; their order is that of the keys.
struct Database {
    std::string m_table;
    std::vector<Column> m_columns;
    std::map<long, Cells> m_rows;
    // In the order of the calls.
    std::vector<std::string> m_calls;

    void Append(Cells cells);
    // Null for a row that was deleted.
    const Cells* Find(long key) const;
};

// The database that the settings name. All connections that are open share it; the first makes it of the
// settings Table, Columns and Rows, and it goes with the last.
std::shared_ptr<Database> OpenDatabase(const Settings& settings);

std::string Lower(std::string text);

}  // namespace memory_driver
