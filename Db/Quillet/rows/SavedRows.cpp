#include "Quillet/rows/SavedRows.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Quillet/Db_TableDescr.h"
#include "Quillet/values/FieldNames.h"
#include "Quillet/xml/Escaping.h"
#include "Quillet/xml/Tree.h"

namespace quillet {

namespace {

using Kind = CellView::Kind;

// Fewer rows are not worth what it takes to keep them.
constexpr std::uint32_t FewestRows = 16;

// Beginnings are copied in units of fixed size, for which compilers need no call.
constexpr std::size_t CopyUnit = 16;

constexpr std::string_view ElementBegin = "<row";
constexpr std::string_view CellEnd = "\"";
constexpr std::string_view ElementEnd = " />\n";

std::size_t UnitsFor(std::size_t bytes) {
    return (bytes + CopyUnit - 1) / CopyUnit;
}

char* Put(std::string_view bytes, char* text) {
    return text + bytes.copy(text, bytes.size());
}

std::string_view BooleanText(VARIANT_BOOL value) {
    return value == VARIANT_TRUE ? "true" : "false";
}

}  // namespace

// How the cells of a column are read and written.
struct SavedRows::Column {
    // Variant where a cell may be empty or null.
    Kind m_kind;
    std::size_t m_index;
    const char* m_beginning;
    std::size_t m_beginningSize;
};

std::unique_ptr<SavedRows> SavedRows::Take(const RowsView& rows, std::uint64_t position) {
    const ColumnStore::Run run = rows.RunAt(position);
    if (run.m_rows < FewestRows) {
        return nullptr;
    }
    std::unique_ptr<SavedRows> taken(new SavedRows(rows.ShareBlockOf(position), run.m_slot, run.m_rows));
    return taken->TakeNames(rows.Descr()) && taken->AreTextsCarried() ? std::move(taken) : nullptr;
}

SavedRows::SavedRows(std::shared_ptr<const ColumnBlock> block, std::uint32_t first, std::uint32_t rows)
    : m_block(std::move(block)), m_first(first), m_rows(rows) {
}

// False if the document would refuse one of the names.
bool SavedRows::TakeNames(const DbTableDescr* descr) {
    std::vector<std::string_view> names(m_block->Columns());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string& name = NameInFile(descr, i);
        if (!xml::IsXmlName(name)) {
            return false;
        }
        names[i] = name;
        std::string beginning(i == 0 ? ElementBegin : CellEnd);
        beginning += ' ';
        beginning += name;
        beginning += "=\"";
        m_beginningSizes.push_back(beginning.size());
        if (m_block->KindOf(i) == Kind::Text) {
            m_textColumns.push_back(i);
        }
        beginning.resize(UnitsFor(beginning.size()) * CopyUnit);
        m_markup += beginning;
    }
    m_roomWithoutTexts = m_markup.size() + names.size() * platform::MaxNumberText + CopyUnit;
    std::sort(names.begin(), names.end());
    return std::adjacent_find(names.begin(), names.end()) == names.end();
}

bool SavedRows::AreTextsCarried() const {
    // Most blocks have no text that needs a look of its own.
    if (xml::IsCarried(m_block->Texts())) {
        return true;
    }
    for (const std::size_t column : m_textColumns) {
        for (std::uint32_t slot = m_first; slot < m_first + m_rows; ++slot) {
            const CellView cell = m_block->Get(column, slot);
            if (cell.GetKind() == Kind::Text && !xml::IsCarried(cell.AsText())) {
                return false;
            }
        }
    }
    return true;
}

std::size_t SavedRows::RoomFor(std::size_t row) const {
    std::size_t room = m_roomWithoutTexts;
    const auto slot = m_first + static_cast<std::uint32_t>(row);
    for (const std::size_t column : m_textColumns) {
        const CellView cell = m_block->Get(column, slot);
        room += cell.GetKind() == Kind::Text ? cell.AsText().size() * xml::MostEscapedBytes : 0;
    }
    return room;
}

std::vector<SavedRows::Column> SavedRows::Columns() const {
    std::vector<Column> columns(m_block->Columns());
    const char* beginning = m_markup.data();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bool hasValues = m_block->HoldsValues(i, m_first + m_rows);
        columns[i] = {hasValues ? m_block->KindOf(i) : Kind::Variant, i, beginning, m_beginningSizes[i]};
        beginning += UnitsFor(m_beginningSizes[i]) * CopyUnit;
    }
    return columns;
}

char* SavedRows::Write(std::size_t& row, char* text, const char* end) const {
    const std::vector<Column> columns = Columns();
    for (; row < m_rows && static_cast<std::size_t>(end - text) >= RoomFor(row); ++row) {
        for (const Column& column : columns) {
            for (std::size_t at = 0; at < column.m_beginningSize; at += CopyUnit) {
                std::memcpy(text + at, column.m_beginning + at, CopyUnit);
            }
            text += column.m_beginningSize;
            text = WriteCell(column, m_first + static_cast<std::uint32_t>(row), text);
        }
        text = Put(columns.empty() ? ElementBegin : CellEnd, text);
        text = Put(ElementEnd, text);
    }
    return text;
}

char* SavedRows::WriteCell(const Column& column, std::uint32_t slot, char* text) const {
    switch (column.m_kind) {
        case Kind::Double:
            return m_numbers.Write(m_block->NumbersOf<double>(column.m_index)[slot], text);
        case Kind::Long:
            return m_numbers.Write(std::int32_t{m_block->NumbersOf<LONG>(column.m_index)[slot]}, text);
        default:
            return WriteValue(m_block->Get(column.m_index, slot), text);
    }
}

char* SavedRows::WriteValue(const CellView& value, char* text) const {
    switch (value.GetKind()) {
        case Kind::Double:
            return m_numbers.Write(value.AsDouble(), text);
        case Kind::Float:
            return m_numbers.Write(value.AsFloat(), text);
        case Kind::Long:
            return m_numbers.Write(std::int32_t{value.AsLong()}, text);
        case Kind::Short:
            return m_numbers.Write(std::int32_t{value.AsShort()}, text);
        case Kind::Boolean:
            return Put(BooleanText(value.AsShort()), text);
        case Kind::Text:
            return xml::WriteEscaped(value.AsText(), text);
        default:
            return text;
    }
}

}  // namespace quillet
