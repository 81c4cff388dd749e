#include "output/Listing.h"

#include <algorithm>

namespace quillet::tool {

namespace {

bool IsNumeric(VARTYPE type) {
    return type == VT_I2 || type == VT_I4 || type == VT_R4 || type == VT_R8;
}

std::vector<Column> ColumnsOf(const DbTableDescr& descr) {
    std::vector<Column> columns;
    for (const DbFieldDescr* field : descr) {
        columns.push_back({field->GetName().ToUtf8(), IsNumeric(field->GetType())});
    }
    return columns;
}

}  // namespace

Listing::~Listing() = default;

void RecordListing::ReadRow(std::size_t row, NumberStyle, std::vector<Value>& values) const {
    values = m_records[row];
}

TableListing::TableListing(const DbTableDescr& descr, DbTableData& data, std::size_t offset,
                           std::size_t limit)
    : Listing(ColumnsOf(descr)), m_rows(*data.GetRows()) {
    const std::size_t count = m_rows.Count();
    m_first = std::min(offset, count);
    m_count = std::min(limit, count - m_first);
    for (const DbFieldDescr* field : descr) {
        // A field without a type has texts.
        m_isTextColumn.push_back(field->GetType() == VT_BSTR || field->GetType() == VT_EMPTY);
    }
}

void TableListing::ReadRow(std::size_t row, NumberStyle style, std::vector<Value>& values) const {
    const bool exists = m_rows.HasRow(m_first + row);
    CComVariant scratch;
    values.resize(Columns().size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const CellView cell = exists ? m_rows.Cell(m_first + row, i) : CellView();
        ReadValue(cell.In(scratch), m_isTextColumn[i], style, values[i]);
    }
}

}  // namespace quillet::tool
