// The cells of a table, column by column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"

class DbRows;

namespace quillet {
class CellView;
class ColumnBlock;
}  // namespace quillet

// A snapshot of a table: its fields, and the values that its cells store, in the order in which its rows are
// visible. What changes in the table later is not seen, and the view stays valid after the rows, the table
// and the database are gone. It shares memory with the table where it can, so taking one costs little more
// than the rows that have objects. Copies of a view share everything. A view may be read while another thread
// changes the table or destroys it.
//
// Rows are in blocks of up to BlockRows, each with its columns side by side. Positions count from 0. What
// lies beyond the rows, columns or blocks is empty.
class QUILLET_API DbColumnView {
public:
    static constexpr std::size_t BlockRows = 4096;

    // What the values of a column are, by the type of its field. Values of an Other column are read by
    // Block::Value alone.
    enum class Type : std::uint8_t { Other, Double, Float, Long, Short, Boolean, Text };

    // What a cell holds: a value of its column's type, nothing, null (with or without the flag that
    // DbFieldValue::IsNull tells), or a value of another type. A text with half of a surrogate pair, which
    // UTF-8 can't carry, counts as of another type.
    enum class State : std::uint8_t { Value, Empty, Null, FlaggedNull, OtherType };

    // Of a text: its place in the bytes of Texts.
    struct TextPlace {
        std::uint32_t m_start;
        std::uint32_t m_size;
    };

    // The texts of a column, in UTF-8.
    class Texts {
    public:
        Texts() = default;
        Texts(const char* bytes, std::span<const TextPlace> places) : m_bytes(bytes), m_places(places) {}

        std::size_t size() const { return m_places.size(); }
        // Empty for a cell that holds no text.
        std::string_view operator[](std::size_t row) const {
            return row < m_places.size()
                       ? std::string_view(m_bytes + m_places[row].m_start, m_places[row].m_size)
                       : std::string_view();
        }
        const char* Bytes() const { return m_bytes; }
        std::span<const TextPlace> Places() const { return m_places; }

    private:
        const char* m_bytes = nullptr;
        std::span<const TextPlace> m_places;
    };

    // Rows that follow one another. The spans and texts of a column have one element for each row, which is
    // zero or empty unless the cell holds a value of the column's type; those of a column of another type are
    // empty. They are valid as long as a copy of the view.
    class QUILLET_API Block {
    public:
        // The position of the first row in the view.
        uint64 FirstRow() const { return m_firstRow; }
        std::size_t Rows() const { return m_rows; }

        std::span<const double> Doubles(std::size_t column) const;
        std::span<const float> Floats(std::size_t column) const;
        std::span<const LONG> Longs(std::size_t column) const;
        std::span<const SHORT> Shorts(std::size_t column) const;
        // VARIANT_TRUE or VARIANT_FALSE; what else a cell holds, as it is.
        std::span<const VARIANT_BOOL> Booleans(std::size_t column) const;
        Texts TextsOf(std::size_t column) const;

        // The rows whose cells don't hold a value of the column's type, as one bit for each row, that of row
        // i in bit i % 64 of element i / 64. No elements if all cells do.
        std::span<const std::uint64_t> Missing(std::size_t column) const;
        State StateOf(std::size_t column, std::size_t row) const;
        // The value of any cell.
        quillet::CComVariant Value(std::size_t column, std::size_t row) const;

    private:
        friend class DbColumnView;

        struct Column {
            Type m_type = Type::Other;
            // Those of the first row; null where nothing is stored.
            const std::byte* m_values = nullptr;
            const char* m_texts = nullptr;
            // What keeps them.
            std::shared_ptr<const quillet::ColumnBlock> m_block;
            std::vector<std::uint64_t> m_missing;
            // Empty if all cells hold values of the type.
            std::vector<State> m_states;
            // Values of other types by their rows, in ascending order.
            std::vector<std::pair<std::uint32_t, quillet::CComVariant>> m_others;
        };

        template <typename Value>
        std::span<const Value> ValuesOf(std::size_t column, Type type) const;
        // Of a cell that holds a value of its column's type.
        quillet::CellView TypedValue(std::size_t column, std::size_t row) const;

        uint64 m_firstRow = 0;
        std::uint32_t m_rows = 0;
        std::vector<Column> m_columns;
    };

    // Without rows and columns.
    DbColumnView() = default;
    // The rows that are there, with a column for each field of their structure. Throws std::bad_alloc. See
    // DbTableData::GetColumns, which reads rows that were not read yet.
    explicit DbColumnView(DbRows& rows);

    uint64 Rows() const { return m_contents == nullptr ? 0 : m_contents->m_rows; }
    std::size_t Columns() const { return m_contents == nullptr ? 0 : m_contents->m_fields.size(); }
    // The name of a column's field.
    const quillet::CString& NameOf(std::size_t column) const;
    Type TypeOf(std::size_t column) const;
    std::span<const Block> Blocks() const;

private:
    struct Field {
        quillet::CString m_name;
        Type m_type;
    };
    struct Contents {
        uint64 m_rows = 0;
        std::vector<Field> m_fields;
        std::vector<Block> m_blocks;
    };
    class Maker;

    std::shared_ptr<const Contents> m_contents;
};
