// Rows in columns on their way to a document.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/rows/RowsView.h"
#include "Quillet/values/NumberWriter.h"
#include "Quillet/xml/PendingLeaves.h"

namespace quillet {

// Rows of one block, without objects, as they were when they were saved. They share the block, to which
// nobody writes any more.
class SavedRows final : public xml::PendingLeaves {
public:
    // The rows from a visible position on. Null where the row has an object, where only few rows follow one
    // another, and where one of them can't be saved.
    static std::unique_ptr<SavedRows> Take(const RowsView& rows, std::uint64_t position);

    std::size_t Count() const override { return m_rows; }
    std::size_t RoomFor(std::size_t row) const override;
    char* Write(std::size_t& row, char* text, const char* end) const override;

private:
    struct Column;

    SavedRows(std::shared_ptr<const ColumnBlock> block, std::uint32_t first, std::uint32_t rows);

    bool TakeNames(const DbTableDescr* descr);
    bool AreTextsCarried() const;
    std::vector<Column> Columns() const;
    char* WriteCell(const Column& column, std::uint32_t slot, char* text) const;
    char* WriteValue(const CellView& value, char* text) const;

    std::shared_ptr<const ColumnBlock> m_block;
    std::uint32_t m_first;
    std::uint32_t m_rows;
    // What comes before the cells of each column: from '<', or from the quote that ends the cell before, to
    // the opening quote. Each is filled up to whole units of copying.
    std::string m_markup;
    std::vector<std::size_t> m_beginningSizes;
    std::vector<std::size_t> m_textColumns;
    std::size_t m_roomWithoutTexts = 0;
    NumberWriter m_numbers;
};

}  // namespace quillet
