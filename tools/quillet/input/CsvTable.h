// A table in a CSV file.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/rows/RowsView.h"
#include "input/CsvReader.h"

namespace quillet::tool {

// The default separator of values.
constexpr char Comma = ',';

// The values of the rows of a CSV file, one after another. A zero byte follows each.
class CsvValues {
public:
    void Add(const CsvReader& row);
    std::size_t CountRows() const { return m_lines.size(); }

    // Goes through the rows once, from the first on.
    class Cursor {
    public:
        explicit Cursor(const CsvValues& values) : m_values(values) {}
        std::string_view Next() {
            const std::string_view value(m_values.m_bytes.data() + m_start, m_values.m_sizes[m_value++]);
            m_start += value.size() + 1;
            return value;
        }

    private:
        const CsvValues& m_values;
        std::size_t m_start = 0;
        std::size_t m_value = 0;
    };
    // The line on which a row begins, from 1.
    std::size_t LineOf(std::size_t row) const { return m_lines[row]; }

private:
    std::string m_bytes;
    std::vector<std::uint32_t> m_sizes;
    std::vector<std::uint32_t> m_lines;
};

// The table in a CSV file: first its names and types are read, then its rows are filled with the values.
// Errors of the file throw Failure, which names it and the line.
class CsvTable {
public:
    // Called with the part of Work that is done.
    using Progress = std::function<void(std::uint64_t)>;

    // The separator of values; by default a comma, and then a file that seems to use another is refused.
    CsvTable(const std::string& path, std::optional<char> delimiter);

    // The work of both steps, in bytes.
    std::uint64_t Work() const { return 2 * m_size; }

    // Reads the file once. Headings that can't be saved or queried get other names; if names are
    // kept, those that can't be saved are refused.
    void ReadStructure(bool keepsNames, const Progress& progress);

    // Headings that got other names, and these names.
    const std::vector<std::pair<std::string, std::string>>& Renamed() const { return m_renamed; }
    DbTableDescr& Structure() { return m_structure; }
    std::size_t CountRows() const { return m_values.CountRows(); }

    // The field that an option refers to by its name or its heading.
    DbFieldDescr& FieldFor(const std::string& option, const std::string& name);

    // Appends the rows to a table that has these fields.
    void FillRows(DbTableData& data, const Progress& progress) const;

private:
    CsvReader Reader() const { return CsvReader(m_text, m_path, m_delimiter.value_or(Comma)); }
    void ReadNames(const CsvReader& reader, bool keepsNames);
    void ReadHeadings(CsvReader& reader) const;
    // Headings is their number with commas as separators; 0 if the row can't be read that way.
    void RefuseOtherDelimiter(const CsvReader& reader, std::size_t headings) const;
    void CheckNames(const CsvReader& reader) const;
    void CheckRow(const CsvReader& reader) const;
    void FillRow(CsvValues::Cursor& values, RowsView& rows, std::size_t row) const;
    std::string Field(std::size_t index) const;

    std::string m_path;
    std::optional<char> m_delimiter;
    // Dropped once it is read.
    std::string m_text;
    std::uint64_t m_size = 0;
    std::vector<std::string> m_headings;
    std::vector<std::pair<std::string, std::string>> m_renamed;
    DbTableDescr m_structure{nullptr};
    CsvValues m_values;
};

// Appends a field to a table without rows. Files may have fields that differ only in case, such as I and i,
// though only the first one is found by name; CreateField would refuse the second.
DbFieldDescr& AppendField(DbTableDescr& descr);

// The field with exactly this name, otherwise the first with it in different case; null if there is none.
DbFieldDescr* FindField(const DbTableDescr& descr, const CString& name);

}  // namespace quillet::tool
