// The rows of a data page: those of tables, the pieces of long values, and usage maps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "Quillet/access/Pager.h"

namespace quillet::access {

class DataPage {
public:
    // The owner that pages of long values name instead of a table's definition: "LVAL".
    static constexpr std::uint32_t LongValues = 0x4C41564C;

    struct Row {
        // The row's place in its directory says where its bytes are now, not the bytes themselves.
        bool m_isMoved = false;
        // The bytes belong to a row that was moved here, and are read only by way of its old place.
        bool m_isMovedHere = false;
        bool m_isDeleted = false;
        ByteView m_bytes;
    };

    DataPage() = default;

    // Throws Error unless the page is a data page.
    DataPage(Page page, const Layout& layout);

    const Page& Base() const { return m_page; }
    // The definition page of the table that the rows belong to, or LongValues; 0 for usage maps.
    std::uint32_t Owner() const { return m_page.U32(OwnerOffset); }

    std::size_t RowCount() const { return m_rowCount; }
    // Whether the page states more rows than it can have. RowCount then is the number of those found.
    bool IsCountWrong() const { return m_isCountWrong; }

    // Throws Error if there is no such row, or if it does not lie between the directory and the row before.
    Row RowAt(std::size_t row) const;

    // The bytes that the row and the one after it share, whatever the row's own entry says; nullopt if the
    // entries beside it are damaged, too, or if one of the two is not a plain row.
    std::optional<ByteView> BytesAround(std::size_t row) const;

private:
    static constexpr std::size_t OwnerOffset = 4;

    std::size_t DirectoryEnd(std::size_t rows) const;
    // The row's place as the directory has it, with its flags.
    std::size_t Entry(std::size_t row) const;
    std::size_t RowsFound() const;

    Page m_page;
    const Layout* m_layout = nullptr;
    std::size_t m_rowCount = 0;
    bool m_isCountWrong = false;
};

// A row by its pointer, with the page that holds its bytes.
struct LocatedRow {
    DataPage m_page;
    DataPage::Row m_row;
};

// Throws Error if there is no such row.
LocatedRow LocateRow(Pager& pager, RowPointer pointer);

}  // namespace quillet::access
