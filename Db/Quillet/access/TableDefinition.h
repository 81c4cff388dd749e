// What a file says of a table: its columns, its indexes, and where its pages are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/Error.h"
#include "Quillet/access/Pager.h"
#include "Quillet/access/TextDecoder.h"

namespace quillet::access {

// Codes that are not listed are read as bytes.
enum class eColumnType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Money = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Numeric = 16,
    // A number that rows of a hidden table refer to.
    Complex = 18,
    BigInteger = 19,
    ExtendedDate = 20,
};

struct Column {
    WideString m_name;
    eColumnType m_type = eColumnType::Boolean;
    // Its bit in a row's null mask. Numbers of deleted columns are not given again.
    std::uint16_t m_number = 0;
    // Among the variable columns.
    std::uint16_t m_variableIndex = 0;
    // Where Access shows it.
    std::uint16_t m_position = 0;
    std::uint8_t m_flags = 0;
    std::uint8_t m_extraFlags = 0;
    // In the fixed part of a row.
    std::uint16_t m_fixedOffset = 0;
    // In bytes; 0 for long values.
    std::uint16_t m_length = 0;
    // Of texts: the language of their order, and its version.
    std::uint16_t m_sortLanguage = 0;
    std::uint8_t m_sortVersion = 0;
    // Of numerics: digits, and digits after the point.
    std::uint8_t m_precision = 0;
    std::uint8_t m_scale = 0;
    // Of complex columns.
    std::uint32_t m_complexId = 0;
    // Of long values: the pages that hold them, and those of them with room.
    std::optional<RowPointer> m_ownedMap;
    std::optional<RowPointer> m_roomMap;

    // The flag tells, not the type: texts can be fixed, and numbers variable.
    bool IsFixed() const { return (m_flags & 0x01) != 0; }
    bool IsAutonumber() const { return (m_flags & 0x04) != 0; }
    bool IsCalculated() const { return (m_extraFlags & 0xC0) == 0xC0; }
    bool IsLongValue() const { return m_type == eColumnType::Ole || m_type == eColumnType::Memo; }
};

struct IndexColumn {
    std::uint16_t m_number = 0;
    bool m_isAscending = true;
};

// An index as it lies in pages. Several logical indexes may share one.
struct RealIndex {
    std::vector<IndexColumn> m_columns;
    RowPointer m_map;
    PageNumber m_root = 0;
    std::uint8_t m_flags = 0;
    // As stated; Access only counts up.
    std::uint32_t m_differentKeys = 0;

    bool IsUnique() const { return (m_flags & 0x01) != 0; }
    // Rows whose columns are all null are not in it.
    bool LeavesOutNulls() const { return (m_flags & 0x02) != 0; }
    bool IsRequired() const { return (m_flags & 0x08) != 0; }
};

// An index as a user knows it.
struct LogicalIndex {
    enum eKind : std::uint8_t { Plain = 0, PrimaryKey = 1, Relation = 2 };

    WideString m_name;
    std::uint32_t m_number = 0;
    // Among the real indexes.
    std::uint32_t m_real = 0;
    std::uint8_t m_kind = Plain;
    // Of relations: 1 in the table that is referred to, 2 in the one that refers; the index and the
    // definition page of the other table; what follows changes and deletions.
    std::uint8_t m_side = 0;
    std::int32_t m_otherIndex = -1;
    PageNumber m_otherTable = 0;
    std::uint8_t m_cascadesUpdates = 0;
    std::uint8_t m_cascadesDeletes = 0;
};

struct TableDefinition {
    // Throws Error if the columns can't be read. Damage behind them (indexes, maps of long values) is added
    // to the log, since rows can be read without.
    static TableDefinition Read(Pager& pager, const TextDecoder& texts, PageNumber page, DamageLog& log);

    // The first page, by which the file names the table.
    PageNumber m_page = 0;
    // All pages, as far as they were needed.
    std::vector<PageNumber> m_pages;
    // As stated, which need not be true.
    std::uint32_t m_statedRows = 0;
    std::uint32_t m_lastAutonumber = 0;
    bool m_isSystem = false;
    // Deleted ones included.
    std::uint16_t m_columnsEver = 0;
    std::uint16_t m_variableColumns = 0;
    RowPointer m_ownedMap;
    RowPointer m_roomMap;
    std::vector<Column> m_columns;
    std::vector<RealIndex> m_realIndexes;
    std::vector<LogicalIndex> m_logicalIndexes;

    // The position of the column of that name, without regard to case; nullopt if there is none.
    std::optional<std::size_t> FindColumn(platform::WideView name) const;
};

}  // namespace quillet::access
