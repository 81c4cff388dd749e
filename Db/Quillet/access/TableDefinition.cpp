#include "Quillet/access/TableDefinition.h"

#include <algorithm>
#include <string>

#include "Quillet/access/DefinitionReader.h"

namespace quillet::access {
namespace {

constexpr std::uint8_t SystemTable = 0x53;
constexpr std::size_t ColumnsOfIndex = 10;
constexpr std::uint16_t NoColumn = 0xFFFF;

// Within a column's entry.
constexpr std::size_t ExtraFlags = 16;
constexpr std::size_t SortVersion = 14;

// Within a logical index's entry, from its number on.
constexpr std::size_t RealIndexNumber = 4;
constexpr std::size_t RelationSide = 8;
constexpr std::size_t OtherIndex = 9;
constexpr std::size_t OtherTable = 13;
constexpr std::size_t CascadesUpdates = 17;
constexpr std::size_t CascadesDeletes = 18;
constexpr std::size_t KindOfIndex = 19;

class Parser {
public:
    Parser(Pager& pager, const TextDecoder& texts, PageNumber page)
        : m_layout(pager.PageLayout()), m_texts(texts), m_reader(pager, page) {
        m_table.m_page = page;
    }

    void ReadHead() {
        const ByteView head = m_reader.Take(m_layout.m_definitionBody);
        m_table.m_statedRows = LittleU32(head, m_layout.m_statedRows);
        m_table.m_lastAutonumber = LittleU32(head, m_layout.m_lastAutonumber);
        m_table.m_isSystem = head[m_layout.m_tableKind] == SystemTable;
        m_table.m_columnsEver = LittleU16(head, m_layout.m_columnsEver);
        m_table.m_variableColumns = LittleU16(head, m_layout.m_variableColumns);
        m_table.m_ownedMap = RowPointer::Read(head, m_layout.m_ownedMap);
        m_table.m_roomMap = RowPointer::Read(head, m_layout.m_roomMap);
        m_columnCount = LittleU16(head, m_layout.m_columns);
        m_logicalCount = LittleU32(head, m_layout.m_logicalIndexes);
        m_realCount = LittleU32(head, m_layout.m_realIndexes);
    }

    void ReadColumns() {
        for (std::uint32_t i = 0; i < m_realCount; ++i) {
            const ByteView entry = m_reader.Take(m_layout.m_indexCountSize);
            m_table.m_realIndexes.emplace_back().m_differentKeys = LittleU32(entry, m_layout.m_indexKeys);
        }
        for (std::size_t i = 0; i < m_columnCount; ++i) {
            m_table.m_columns.push_back(ColumnOf(m_reader.Take(m_layout.m_columnSize)));
        }
        for (Column& column : m_table.m_columns) {
            column.m_name = ReadName();
        }
    }

    void ReadIndexes() {
        for (RealIndex& index : m_table.m_realIndexes) {
            ReadRealIndex(m_reader.Take(m_layout.m_realIndexSize), index);
        }
        for (std::uint32_t i = 0; i < m_logicalCount; ++i) {
            const ByteView entry = m_reader.Take(m_layout.m_logicalIndexSize);
            m_table.m_logicalIndexes.push_back(LogicalIndexOf(entry.subspan(m_layout.m_logicalNumber)));
        }
        for (LogicalIndex& index : m_table.m_logicalIndexes) {
            index.m_name = ReadName();
        }
    }

    void ReadLongValueMaps() {
        for (std::uint16_t number = m_reader.U16(); number != NoColumn; number = m_reader.U16()) {
            const ByteView maps = m_reader.Take(2 * RowPointer::Size);
            const auto column = std::ranges::find(m_table.m_columns, number, &Column::m_number);
            if (column != m_table.m_columns.end()) {
                column->m_ownedMap = RowPointer::Read(maps, 0);
                column->m_roomMap = RowPointer::Read(maps, RowPointer::Size);
            }
        }
    }

    TableDefinition Finish() {
        m_table.m_pages = m_reader.Pages();
        return std::move(m_table);
    }

private:
    Column ColumnOf(ByteView entry) const {
        Column column;
        column.m_type = static_cast<eColumnType>(entry[0]);
        column.m_number = LittleU16(entry, m_layout.m_columnNumber);
        column.m_variableIndex = LittleU16(entry, m_layout.m_columnVariableIndex);
        column.m_position = LittleU16(entry, m_layout.m_columnPosition);
        column.m_flags = entry[m_layout.m_columnFlags];
        column.m_extraFlags = m_layout.m_isJet3 ? std::uint8_t{0} : entry[ExtraFlags];
        column.m_fixedOffset = LittleU16(entry, m_layout.m_columnOffset);
        column.m_length = LittleU16(entry, m_layout.m_columnLength);
        ReadDetails(entry, column);
        return column;
    }

    // What the bytes mean depends on the type.
    void ReadDetails(ByteView entry, Column& column) const {
        switch (column.m_type) {
            case eColumnType::Numeric:
                column.m_precision = entry[11];
                column.m_scale = entry[12];
                break;
            case eColumnType::Complex:
                column.m_complexId = LittleU32(entry, 11);
                break;
            default:
                column.m_sortLanguage = LittleU16(entry, m_layout.m_columnDetails);
                column.m_sortVersion = m_layout.m_isJet3 ? std::uint8_t{0} : entry[SortVersion];
        }
    }

    WideString ReadName() {
        const std::size_t size = m_layout.m_nameLengthSize == 1 ? m_reader.U8() : m_reader.U16();
        WideString name;
        m_texts.AppendName(m_reader.Take(size), name);
        return name;
    }

    void ReadRealIndex(ByteView entry, RealIndex& index) const {
        constexpr std::size_t ColumnEntry = 3;
        for (std::size_t i = 0; i < ColumnsOfIndex; ++i) {
            const std::size_t offset = m_layout.m_indexColumns + i * ColumnEntry;
            const std::uint16_t number = LittleU16(entry, offset);
            if (number != NoColumn) {
                index.m_columns.push_back({number, entry[offset + 2] == 1});
            }
        }
        index.m_map = RowPointer::Read(entry, m_layout.m_indexMap);
        index.m_root = LittleU32(entry, m_layout.m_indexRoot);
        index.m_flags = entry[m_layout.m_indexFlags];
    }

    static LogicalIndex LogicalIndexOf(ByteView entry) {
        LogicalIndex index;
        index.m_number = LittleU32(entry, 0);
        index.m_real = LittleU32(entry, RealIndexNumber);
        index.m_side = entry[RelationSide];
        index.m_otherIndex = static_cast<std::int32_t>(LittleU32(entry, OtherIndex));
        index.m_otherTable = LittleU32(entry, OtherTable);
        index.m_cascadesUpdates = entry[CascadesUpdates];
        index.m_cascadesDeletes = entry[CascadesDeletes];
        index.m_kind = entry[KindOfIndex];
        return index;
    }

    const Layout& m_layout;
    const TextDecoder& m_texts;
    DefinitionReader m_reader;
    TableDefinition m_table;
    std::size_t m_columnCount = 0;
    std::uint32_t m_logicalCount = 0;
    std::uint32_t m_realCount = 0;
};

}  // namespace

TableDefinition TableDefinition::Read(Pager& pager, const TextDecoder& texts, PageNumber page,
                                      DamageLog& log) {
    Parser parser(pager, texts, page);
    parser.ReadHead();
    parser.ReadColumns();
    try {
        parser.ReadIndexes();
        parser.ReadLongValueMaps();
    } catch (const Error& error) {
        log.Add(error);
    }
    return parser.Finish();
}

std::optional<std::size_t> TableDefinition::FindColumn(platform::WideView name) const {
    const auto found = std::ranges::find_if(
        m_columns, [&](const Column& column) { return platform::CompareNoCase(column.m_name, name) == 0; });
    return found == m_columns.end() ? std::nullopt
                                    : std::optional(static_cast<std::size_t>(found - m_columns.begin()));
}

}  // namespace quillet::access
