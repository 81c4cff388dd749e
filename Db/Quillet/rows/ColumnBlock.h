// Some rows of a table, column by column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/Db_ColumnView.h"
#include "Quillet/rows/CellView.h"

class DbTableRow;

namespace quillet {

// The types of the values that the columns of a block hold.
using ColumnKinds = std::vector<CellView::Kind>;

// The kind of column for a field's values; Empty for a type that columns can't hold.
CellView::Kind ColumnKindOf(VARTYPE type);

// Slots for rows, numbered from 0. A row is kept in its slot of each column, or it has an object, and then
// the object alone tells what the row holds.
class ColumnBlock {
public:
    static constexpr std::uint32_t MostSlots = 4096;

    // The bytes that a value takes in its column.
    static std::size_t WidthOf(CellView::Kind kind);

    explicit ColumnBlock(const ColumnKinds& kinds);
    // The same columns, without slots.
    explicit ColumnBlock(const ColumnBlock& other);
    ColumnBlock& operator=(const ColumnBlock&) = delete;
    // The same columns and slots.
    std::unique_ptr<ColumnBlock> Copy() const;

    // Whether new rows, whose cells are numbered by their positions, can be kept here.
    bool Fits(const ColumnKinds& kinds) const;

    std::uint32_t Used() const { return m_used; }
    std::uint32_t Capacity() const { return m_capacity; }
    std::size_t Columns() const { return m_columns.size(); }
    // The number that the cells of a column have.
    int IndexOf(std::size_t column) const { return m_columns[column].m_index; }

    // Room for so many slots in all. The rows keep what they hold. The same for every member that throws
    // std::bad_alloc.
    void Reserve(std::uint32_t slots);
    // Takes slots into use that there is room for; their cells are empty.
    void Use(std::uint32_t slots) { m_used += slots; }
    // Gives back the last slot that is in use.
    void GiveBackLast();
    // Gives back all slots.
    void Clear();

    // The value in a slot of a column.
    CellView Get(std::size_t column, std::uint32_t slot) const {
        const Column& from = m_columns[column];
        if (slot >= from.m_filled) {
            return {};
        }
        return from.m_states == nullptr ? ValueOf(from, slot) : ValueByState(from, slot);
    }
    // False, and nothing is changed, for a value that the column can't hold.
    bool Put(std::size_t column, std::uint32_t slot, const CellView& value);

    // For rows that are filled one after another, with a value of its column's kind in each cell: values that
    // count once Fill is told of their slots. There must be room for these.
    template <typename Number>
    Number* NumbersOf(std::size_t column) {
        return reinterpret_cast<Number*>(m_columns[column].m_values.get());
    }
    template <typename Number>
    const Number* NumbersOf(std::size_t column) const {
        return reinterpret_cast<const Number*>(m_columns[column].m_values.get());
    }
    // Whether all slots of a column before this one hold values.
    bool HoldsValues(std::size_t column, std::uint32_t end) const {
        return m_columns[column].m_states == nullptr && end <= m_columns[column].m_filled;
    }
    CellView::Kind KindOf(std::size_t column) const { return m_columns[column].m_kind; }
    // A text in a column of texts, in a slot that holds a value.
    std::string_view TextAt(std::size_t column, std::uint32_t slot) const {
        const TextPlace place = At<TextPlace>(m_columns[column], slot);
        return {m_texts.data() + place.m_start, place.m_size};
    }
    // False where the block can't take more text.
    bool AddText(std::size_t column, std::uint32_t slot, std::string_view text);
    void PutPlace(std::size_t column, std::uint32_t slot) { At<TextPlace>(m_columns[column], slot) = {0, 0}; }
    std::size_t TextBytes() const { return m_texts.size(); }
    // All texts, one after another, those of deleted rows among them.
    std::string_view Texts() const { return m_texts; }
    void TakeBackTexts(std::size_t bytes) { m_texts.resize(bytes); }
    void ReserveTexts(std::size_t bytes) { m_texts.reserve(bytes); }
    void Fill(std::uint32_t first, std::uint32_t end);
    // The same for one column, of a kind that holds values.
    void FillColumn(std::size_t column, std::uint32_t first, std::uint32_t end);
    // Slots that were never filled are empty cells, and their values are zeros.
    void FillUp();

    // What a column keeps: the slots before Filled hold values, or what their states say, and zeros where
    // that is no value. The states are null if all hold values.
    std::uint32_t Filled(std::size_t column) const { return m_columns[column].m_filled; }
    const std::byte* Values(std::size_t column) const { return m_columns[column].m_values.get(); }
    const DbColumnView::State* States(std::size_t column) const { return m_columns[column].m_states.get(); }

    // The object of the row in a slot; null if none was made.
    DbTableRow* RowAt(std::uint32_t slot) const { return m_rows == nullptr ? nullptr : m_rows[slot]; }
    // Whether there is room for objects: without it none of the rows has one.
    bool HasRows() const { return m_rows != nullptr; }
    // After this SetRow can't fail.
    void MakeRoomForRows();
    void SetRow(std::uint32_t slot, DbTableRow* row) { m_rows[slot] = row; }

    // Makes a column with one value in all slots that are in use, to be inserted later. False for a value
    // that a column of the kind can't hold.
    bool MakeColumn(CellView::Kind kind, int index, const CellView& value);
    // Inserts the column that was made last. Can't fail; the rows must be those that they were before.
    void InsertColumn(std::size_t position);
    void EraseColumn(std::size_t position);

private:
    using State = DbColumnView::State;
    using TextPlace = DbColumnView::TextPlace;

    struct Column {
        CellView::Kind m_kind = CellView::Kind::Empty;
        int m_index = 0;
        // The slots before this one hold values, or what their states say; the others are empty.
        std::uint32_t m_filled = 0;
        std::unique_ptr<std::byte[]> m_values;
        // Null if all slots that are filled hold values.
        std::unique_ptr<State[]> m_states;
    };

    static std::unique_ptr<std::byte[]> MakeValues(const Column& column, std::uint32_t slots);
    template <typename Number>
    static Number& At(const Column& column, std::uint32_t slot) {
        return reinterpret_cast<Number*>(column.m_values.get())[slot];
    }
    CellView ValueOf(const Column& from, std::uint32_t slot) const {
        switch (from.m_kind) {
            case CellView::Kind::Double:
                return CellView::Double(At<double>(from, slot));
            case CellView::Kind::Float:
                return CellView::Float(At<float>(from, slot));
            case CellView::Kind::Long:
                return CellView::Long(At<LONG>(from, slot));
            case CellView::Kind::Short:
                return CellView::Short(At<SHORT>(from, slot));
            case CellView::Kind::Boolean:
                return CellView::Boolean(At<VARIANT_BOOL>(from, slot));
            case CellView::Kind::Text: {
                const TextPlace place = At<TextPlace>(from, slot);
                return CellView::Text({m_texts.data() + place.m_start, place.m_size});
            }
            default:
                return {};
        }
    }
    CellView ValueByState(const Column& from, std::uint32_t slot) const;
    bool Put(Column& column, std::uint32_t slot, const CellView& value);
    bool PutVariant(Column& column, std::uint32_t slot, const CComVariant& value);
    bool PutText(Column& column, std::uint32_t slot, std::size_t start);
    template <typename Number>
    bool PutNumber(Column& column, std::uint32_t slot, Number number);
    void PutState(Column& column, std::uint32_t slot, State state);
    static void Zero(Column& column, std::uint32_t first, std::uint32_t end);

    std::uint32_t m_used = 0;
    std::uint32_t m_capacity = 0;
    std::vector<Column> m_columns;
    std::unique_ptr<Column> m_newColumn;
    // UTF-8, one after another. Those before m_sharedTexts are kept, since rows may share them.
    std::string m_texts;
    std::size_t m_sharedTexts = 0;
    std::unique_ptr<DbTableRow*[]> m_rows;
};

}  // namespace quillet
