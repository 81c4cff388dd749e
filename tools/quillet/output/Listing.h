// The input of the writers: columns, and rows that can be read as often as a writer needs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Quillet/Db_TableData.h"
#include "Quillet/rows/RowsView.h"
#include "output/Value.h"

namespace quillet::tool {

struct Column {
    std::string m_name;
    // Right-aligned for people.
    bool m_isNumeric = false;
};

class Listing {
public:
    explicit Listing(std::vector<Column> columns) : m_columns(std::move(columns)) {}
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;
    virtual ~Listing();

    const std::vector<Column>& Columns() const { return m_columns; }
    virtual std::size_t CountRows() const = 0;
    // Replaces values by those of a row, counted from 0: one for each column.
    virtual void ReadRow(std::size_t row, NumberStyle style, std::vector<Value>& values) const = 0;

private:
    std::vector<Column> m_columns;
};

// Rows that were created here.
class RecordListing : public Listing {
public:
    using Listing::Listing;

    // One value for each column.
    void Add(std::vector<Value> record) { m_records.push_back(std::move(record)); }

    std::size_t CountRows() const override { return m_records.size(); }
    void ReadRow(std::size_t row, NumberStyle style, std::vector<Value>& values) const override;

private:
    std::vector<std::vector<Value>> m_records;
};

// A range of a table's rows, which have been read. The table must outlive the listing.
class TableListing : public Listing {
public:
    TableListing(const DbTableDescr& descr, DbTableData& data, std::size_t offset, std::size_t limit);

    std::size_t CountRows() const override { return m_count; }
    void ReadRow(std::size_t row, NumberStyle style, std::vector<Value>& values) const override;

private:
    RowsView m_rows;
    std::size_t m_first;
    std::size_t m_count;
    std::vector<bool> m_isTextColumn;
};

}  // namespace quillet::tool
