#include "Database.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace memory_driver {
namespace {

// More than the library takes for a short text.
constexpr std::size_t LongestText = 65535;
constexpr std::size_t IntegerDigits = 10;

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

// "<name> integer", "<name> text <characters>" or "<name> longtext".
Column ParseColumn(const std::string& text) {
    const std::vector<std::string> words = Split(text, ' ');
    if (words.size() == 2 && words[1] == "integer") {
        return {words[0], Column::Type::Integer, IntegerDigits};
    }
    if (words.size() == 2 && words[1] == "longtext") {
        return {words[0], Column::Type::LongText, LongestText};
    }
    if (words.size() == 3 && words[1] == "text") {
        return {words[0], Column::Type::Text, std::strtoul(words[2].c_str(), nullptr, 10)};
    }
    throw Failure{"HY000", "unknown type of a column: " + text};
}

Cells ParseRow(const std::string& text, std::size_t count) {
    Cells cells;
    for (const std::string& value : Split(text, '|')) {
        cells.push_back(value == "NULL" ? Cell() : Cell(value));
    }
    if (cells.size() != count) {
        throw Failure{"HY000", "a row has another number of values than there are columns: " + text};
    }
    return cells;
}

std::shared_ptr<Database> MakeDatabase(const Settings& settings) {
    auto database = std::make_shared<Database>();
    database->m_table = Setting(settings, "table");
    for (const std::string& column : Split(Setting(settings, "columns"), ',')) {
        database->m_columns.push_back(ParseColumn(column));
    }
    const std::string rows = Setting(settings, "rows");
    if (!rows.empty()) {
        for (const std::string& row : Split(rows, '/')) {
            database->Append(ParseRow(row, database->m_columns.size()));
        }
    }
    return database;
}

}  // namespace

Settings ParseConnectString(const std::string& text) {
    Settings settings;
    for (const std::string& part : Split(text, ';')) {
        const std::size_t equals = part.find('=');
        if (equals != std::string::npos) {
            settings[Lower(part.substr(0, equals))] = part.substr(equals + 1);
        }
    }
    return settings;
}

std::string Setting(const Settings& settings, const std::string& keyword) {
    const auto found = settings.find(keyword);
    return found == settings.end() ? "" : found->second;
}

void Database::Append(Cells cells) {
    const long key = m_rows.empty() ? 1 : m_rows.rbegin()->first + 1;
    m_rows.emplace(key, std::move(cells));
}

const Cells* Database::Find(long key) const {
    const auto found = m_rows.find(key);
    return found == m_rows.end() ? nullptr : &found->second;
}

std::shared_ptr<Database> OpenDatabase(const Settings& settings) {
    static std::map<std::string, std::weak_ptr<Database>> s_open;
    std::weak_ptr<Database>& open = s_open[Setting(settings, "database")];
    std::shared_ptr<Database> database = open.lock();
    if (database == nullptr) {
        database = MakeDatabase(settings);
        open = database;
    }
    return database;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

}  // namespace memory_driver
