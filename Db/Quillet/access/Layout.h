// Where things lie in the pages of the two layouts: that of Access 97 (Jet 3) and the one since Access 2000.
// Offsets count from the start of the page or entry that they are named after, sizes are in bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillet::access {

// The first byte of a page.
enum class ePageType : std::uint8_t { Data = 1, Definition = 2, IndexNode = 3, IndexLeaf = 4, UsageMap = 5 };

struct Layout {
    bool m_isJet3;
    std::size_t m_pageSize;

    // The header page.
    std::size_t m_maskedSize;
    std::size_t m_passwordSize;

    // Data pages.
    std::size_t m_rowCount;
    std::size_t m_rowStarts;

    // Table definitions: their first page.
    std::size_t m_statedRows;
    std::size_t m_lastAutonumber;
    std::size_t m_tableKind;
    std::size_t m_columnsEver;
    std::size_t m_variableColumns;
    std::size_t m_columns;
    std::size_t m_logicalIndexes;
    std::size_t m_realIndexes;
    std::size_t m_ownedMap;
    std::size_t m_roomMap;
    std::size_t m_definitionBody;

    // Entries of a definition's body.
    std::size_t m_indexCountSize;
    std::size_t m_indexKeys;
    std::size_t m_columnSize;
    std::size_t m_columnNumber;
    std::size_t m_columnVariableIndex;
    std::size_t m_columnPosition;
    std::size_t m_columnDetails;
    std::size_t m_columnFlags;
    std::size_t m_columnOffset;
    std::size_t m_columnLength;
    std::size_t m_nameLengthSize;
    std::size_t m_realIndexSize;
    std::size_t m_indexColumns;
    std::size_t m_indexMap;
    std::size_t m_indexRoot;
    std::size_t m_indexFlags;
    std::size_t m_logicalIndexSize;
    std::size_t m_logicalNumber;

    // Rows: the size of the number of columns, of the number of variable columns and of their starts.
    std::size_t m_rowNumberSize;
};

inline constexpr Layout Jet3Layout{
    .m_isJet3 = true,
    .m_pageSize = 2048,
    .m_maskedSize = 126,
    .m_passwordSize = 20,
    .m_rowCount = 8,
    .m_rowStarts = 10,
    .m_statedRows = 12,
    .m_lastAutonumber = 16,
    .m_tableKind = 20,
    .m_columnsEver = 21,
    .m_variableColumns = 23,
    .m_columns = 25,
    .m_logicalIndexes = 27,
    .m_realIndexes = 31,
    .m_ownedMap = 35,
    .m_roomMap = 39,
    .m_definitionBody = 43,
    .m_indexCountSize = 8,
    .m_indexKeys = 4,
    .m_columnSize = 18,
    .m_columnNumber = 1,
    .m_columnVariableIndex = 3,
    .m_columnPosition = 5,
    .m_columnDetails = 9,
    .m_columnFlags = 13,
    .m_columnOffset = 14,
    .m_columnLength = 16,
    .m_nameLengthSize = 1,
    .m_realIndexSize = 39,
    .m_indexColumns = 0,
    .m_indexMap = 30,
    .m_indexRoot = 34,
    .m_indexFlags = 38,
    .m_logicalIndexSize = 20,
    .m_logicalNumber = 0,
    .m_rowNumberSize = 1,
};

inline constexpr Layout Jet4Layout{
    .m_isJet3 = false,
    .m_pageSize = 4096,
    .m_maskedSize = 128,
    .m_passwordSize = 40,
    .m_rowCount = 12,
    .m_rowStarts = 14,
    .m_statedRows = 16,
    .m_lastAutonumber = 20,
    .m_tableKind = 40,
    .m_columnsEver = 41,
    .m_variableColumns = 43,
    .m_columns = 45,
    .m_logicalIndexes = 47,
    .m_realIndexes = 51,
    .m_ownedMap = 55,
    .m_roomMap = 59,
    .m_definitionBody = 63,
    .m_indexCountSize = 12,
    .m_indexKeys = 4,
    .m_columnSize = 25,
    .m_columnNumber = 5,
    .m_columnVariableIndex = 7,
    .m_columnPosition = 9,
    .m_columnDetails = 11,
    .m_columnFlags = 15,
    .m_columnOffset = 21,
    .m_columnLength = 23,
    .m_nameLengthSize = 2,
    .m_realIndexSize = 52,
    .m_indexColumns = 4,
    .m_indexMap = 34,
    .m_indexRoot = 38,
    .m_indexFlags = 46,
    .m_logicalIndexSize = 28,
    .m_logicalNumber = 4,
    .m_rowNumberSize = 2,
};

}  // namespace quillet::access
