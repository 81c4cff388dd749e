// Makes small Access files from their pages: enough to try each rule of the format, with nothing that a rule
// under test does not need. What is wrong with a page, a test writes into it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/access/Layout.h"
#include "Quillet/access/PageCipher.h"
#include "Quillet/access/TableDefinition.h"
#include "support/MemoryFile.h"

namespace quillet::test {

using access::eColumnType;

// Bytes with numbers in them, little endian.
class ByteWriter {
public:
    explicit ByteWriter(std::string bytes = "") : m_bytes(std::move(bytes)) {}

    ByteWriter& Number(std::uint64_t number, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            m_bytes += static_cast<char>(i < sizeof number ? number >> (8 * i) : 0);
        }
        return *this;
    }
    ByteWriter& Text(const std::string& text) {
        m_bytes += text;
        return *this;
    }
    // Up to that length.
    ByteWriter& Zeros(std::size_t length) {
        m_bytes.resize(length);
        return *this;
    }
    // Replaces the bytes there.
    ByteWriter& Put(std::size_t offset, std::uint64_t number, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            m_bytes[offset + i] = static_cast<char>(number >> (8 * i));
        }
        return *this;
    }
    ByteWriter& Put(std::size_t offset, const std::string& text) {
        m_bytes.replace(offset, text.size(), text);
        return *this;
    }

    const std::string& Bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

inline std::string Number(std::uint64_t number, std::size_t size) {
    return ByteWriter().Number(number, size).Bytes();
}

// ASCII as UTF-16.
inline std::string Wide(const std::string& text) {
    ByteWriter bytes;
    for (const char character : text) {
        bytes.Number(static_cast<unsigned char>(character), 2);
    }
    return bytes.Bytes();
}

struct MadeColumn {
    std::string m_name;
    eColumnType m_type = eColumnType::Long;
    std::uint16_t m_number = 0;
    // The place in the fixed part; nullopt for a variable column, whose place among those is m_variable.
    std::optional<std::uint16_t> m_fixedAt;
    std::uint16_t m_variable = 0;
    std::uint16_t m_length = 4;
    std::uint8_t m_flags = 2;
    std::uint8_t m_extraFlags = 0;
    // The bytes whose meaning depends on the type, such as digits and scale.
    std::uint32_t m_details = 0;

    static MadeColumn Fixed(const std::string& name, eColumnType type, std::uint16_t number, std::uint16_t at,
                            std::uint16_t length) {
        MadeColumn column{name, type, number, at};
        column.m_length = length;
        return column;
    }
    static MadeColumn Variable(const std::string& name, eColumnType type, std::uint16_t number,
                               std::uint16_t place) {
        MadeColumn column{name, type, number, std::nullopt, place};
        column.m_length = 255;
        return column;
    }
};

struct MadeIndex {
    std::string m_name;
    std::vector<access::IndexColumn> m_columns;
    std::uint8_t m_flags = 0;
    std::uint8_t m_kind = 0;
    std::uint32_t m_root = 0;
};

struct MadeTable {
    std::vector<MadeColumn> m_columns;
    // Each both real and logical.
    std::vector<MadeIndex> m_indexes;
};

// A row of a data page, with the flags of its entry.
struct MadeRow {
    std::string m_bytes;
    std::uint16_t m_flags = 0;

    static constexpr std::uint16_t Moved = 0x4000;
    static constexpr std::uint16_t MovedHere = 0x8000;
    static constexpr std::uint16_t Deleted = 0xC000;
};

// The values of a row, each as bytes; nullopt for a null. A boolean is true if it has a value.
using MadeValues = std::vector<std::optional<std::string>>;

class AccessPages {
public:
    explicit AccessPages(const access::Layout& layout, std::uint8_t version)
        : m_layout(layout), m_version(version) {
        AddPage(Header());
        AddDataPage(1, {});
        AddPage("");
        // Nothing is in the catalog before File is called.
        m_catalogMap = AddDataPage(0, {{MapOf({})}, {MapOf({})}});
    }
    static AccessPages Jet3() { return AccessPages(access::Jet3Layout, 0); }
    static AccessPages Jet4(std::uint8_t version = 1) { return AccessPages(access::Jet4Layout, version); }

    const access::Layout& PageLayout() const { return m_layout; }
    std::uint32_t PageCount() const { return static_cast<std::uint32_t>(m_pages.size()); }

    // The page's bytes, to be changed.
    ByteWriter& Page(std::uint32_t number) { return m_pages[number]; }

    std::uint32_t AddPage(const std::string& bytes) {
        m_pages.emplace_back(bytes).Zeros(m_layout.m_pageSize);
        return PageCount() - 1;
    }

    std::uint32_t AddDataPage(std::uint32_t owner, const std::vector<MadeRow>& rows) {
        return AddPage(DataPage(owner, rows));
    }

    std::uint32_t AddLongValuePage(const std::vector<MadeRow>& rows) { return AddDataPage(0x4C41564C, rows); }

    // A usage map of the small kind.
    std::string MapOf(const std::vector<std::uint32_t>& pages, std::uint32_t first = 0) const {
        std::string bits(m_layout.m_isJet3 ? 128 : 64, '\0');
        for (const std::uint32_t page : pages) {
            char& byte = bits[(page - first) / 8];
            byte = static_cast<char>(byte | 1 << (page - first) % 8);
        }
        return Number(0, 1) + Number(first, 4) + bits;
    }

    // Adds a table with its map and no rows, and its entry in the catalog. Returns its definition page.
    std::uint32_t AddTable(const std::string& name, const MadeTable& table, std::uint32_t flags = 0,
                           const std::optional<std::string>& properties = std::nullopt) {
        const std::uint32_t map = AddDataPage(0, {{MapOf({})}, {MapOf({})}});
        const std::uint32_t page = AddDefinition(table, map);
        m_tables.push_back({page, map, table, {}});
        AddEntry(name, 1, flags, page, properties);
        return page;
    }

    void AddEntry(const std::string& name, std::int16_t type, std::uint32_t flags, std::uint32_t id,
                  const std::optional<std::string>& properties = std::nullopt) {
        const std::optional<std::string> inRow =
            properties
                ? std::optional(Number(0x80000000 + properties->size(), 4) + Number(0, 8) + *properties)
                : std::nullopt;
        m_entries.push_back(
            {Row(CatalogTable(), {Number(id, 4), Name(name), Number(static_cast<std::uint16_t>(type), 2),
                                  Number(flags, 4), inRow})});
    }

    // Adds a data page of the table, which its map names.
    std::uint32_t AddRows(std::uint32_t table, const std::vector<MadeRow>& rows) {
        const std::uint32_t page = AddDataPage(table, rows);
        for (KnownTable& known : m_tables) {
            if (known.m_page == table) {
                known.m_rowPages.push_back(page);
                m_pages[known.m_map] = ByteWriter(DataPage(0, {{MapOf(known.m_rowPages)}, {MapOf({})}}));
            }
        }
        return page;
    }

    // The bytes of a row of the table, padded after its last column. The row has the columns up to that
    // number, all of them without one.
    std::string Row(const MadeTable& table, const MadeValues& values,
                    std::optional<std::uint16_t> columns = std::nullopt, std::size_t padding = 0) const {
        const std::uint16_t count = columns ? *columns : ColumnsEver(table);
        std::string fixed;
        std::vector<std::string> variable;
        std::string mask((count + 7U) / 8, '\0');
        for (std::size_t i = 0; i < table.m_columns.size(); ++i) {
            const MadeColumn& column = table.m_columns[i];
            if (column.m_number >= count) {
                continue;
            }
            if (values[i]) {
                char& byte = mask[column.m_number / 8U];
                byte = static_cast<char>(byte | 1 << column.m_number % 8);
            }
            if (column.m_fixedAt) {
                const std::size_t end = *column.m_fixedAt + std::size_t{column.m_length};
                fixed.resize(std::max(fixed.size(), end));
                fixed.replace(*column.m_fixedAt, column.m_length,
                              (values[i] ? *values[i] : std::string()) + std::string(column.m_length, '\0'),
                              0, column.m_length);
            } else {
                variable.resize(std::max<std::size_t>(variable.size(), column.m_variable + 1U));
                variable[column.m_variable] = values[i].value_or("");
            }
        }
        return Joined(count, fixed, variable, mask, padding);
    }

    // A definition as it lies in its pages, over more of them where one is too small.
    std::string Definition(const MadeTable& table, std::uint32_t map, std::uint32_t row = 0) const {
        ByteWriter head;
        head.Number(0x0102, 2).Zeros(m_layout.m_definitionBody);
        head.Put(m_layout.m_tableKind, 0x4E, 1);
        head.Put(m_layout.m_columnsEver, ColumnsEver(table), 2);
        head.Put(m_layout.m_variableColumns, VariableColumns(table), 2);
        head.Put(m_layout.m_columns, table.m_columns.size(), 2);
        head.Put(m_layout.m_logicalIndexes, table.m_indexes.size(), 4);
        head.Put(m_layout.m_realIndexes, table.m_indexes.size(), 4);
        head.Put(m_layout.m_ownedMap, map << 8 | row, 4);
        head.Put(m_layout.m_roomMap, map << 8 | (row + 1), 4);
        std::string body(table.m_indexes.size() * m_layout.m_indexCountSize, '\0');
        for (const MadeColumn& column : table.m_columns) {
            body += ColumnEntry(column);
        }
        for (const MadeColumn& column : table.m_columns) {
            body += SizedName(column.m_name);
        }
        for (const MadeIndex& index : table.m_indexes) {
            body += RealIndexEntry(index);
        }
        for (std::size_t i = 0; i < table.m_indexes.size(); ++i) {
            body += LogicalIndexEntry(i, table.m_indexes[i]);
        }
        for (const MadeIndex& index : table.m_indexes) {
            body += SizedName(index.m_name);
        }
        return head.Put(8, head.Bytes().size() + body.size() + 2, 4).Bytes() + body + "\xFF\xFF";
    }

    std::uint32_t AddDefinition(const MadeTable& table, std::uint32_t map, std::uint32_t row = 0) {
        const std::uint32_t first = AddPage("");
        WriteDefinition(first, Definition(table, map, row));
        return first;
    }

    // The whole file; its catalog lists what was added.
    std::string Bytes() {
        WriteDefinition(2, Definition(CatalogTable(), m_catalogMap));
        const std::uint32_t rows = AddDataPage(2, m_entries);
        m_pages[m_catalogMap] = ByteWriter(DataPage(0, {{MapOf({rows})}, {MapOf({})}}));
        const std::string bytes = Joined();
        m_pages.pop_back();
        return bytes;
    }

    // All pages as they are.
    std::string Joined() const {
        std::string bytes;
        for (const ByteWriter& page : m_pages) {
            bytes += page.Bytes();
        }
        return bytes;
    }

    std::unique_ptr<MemoryFile> File() { return std::make_unique<MemoryFile>(Bytes()); }

    // A name in a definition or a catalog row.
    std::string Name(const std::string& name) const { return m_layout.m_isJet3 ? name : Wide(name); }

    // The header page, its masked part as plain bytes at the offsets of the page.
    std::string Header(const std::vector<std::pair<std::size_t, std::string>>& masked = {}) const {
        ByteWriter page;
        page.Zeros(m_layout.m_pageSize).Put(0, 0x100, 4);
        page.Put(4, m_version < 2 ? "Standard Jet DB" : "Standard ACE DB").Put(0x14, m_version, 1);
        page.Put(0x3C, 1252, 2);
        for (const auto& [offset, bytes] : masked) {
            page.Put(offset, bytes);
        }
        std::string bytes = page.Bytes();
        access::ApplyCipher(
            {0xC7, 0xDA, 0x39, 0x6B},
            std::span(reinterpret_cast<std::uint8_t*>(bytes.data()) + 0x18, m_layout.m_maskedSize));
        return bytes;
    }

private:
    struct KnownTable {
        std::uint32_t m_page;
        std::uint32_t m_map;
        MadeTable m_table;
        std::vector<std::uint32_t> m_rowPages;
    };

    static MadeTable CatalogTable() {
        return {{MadeColumn::Fixed("Id", eColumnType::Long, 0, 0, 4),
                 MadeColumn::Variable("Name", eColumnType::Text, 1, 0),
                 MadeColumn::Fixed("Type", eColumnType::Integer, 2, 4, 2),
                 MadeColumn::Fixed("Flags", eColumnType::Long, 3, 6, 4),
                 MadeColumn::Variable("LvProp", eColumnType::Ole, 4, 1)},
                {}};
    }

    static std::uint16_t ColumnsEver(const MadeTable& table) {
        std::uint16_t count = 0;
        for (const MadeColumn& column : table.m_columns) {
            count = std::max<std::uint16_t>(count, static_cast<std::uint16_t>(column.m_number + 1));
        }
        return count;
    }

    static std::uint16_t VariableColumns(const MadeTable& table) {
        std::uint16_t count = 0;
        for (const MadeColumn& column : table.m_columns) {
            if (!column.m_fixedAt) {
                count = std::max<std::uint16_t>(count, static_cast<std::uint16_t>(column.m_variable + 1));
            }
        }
        return count;
    }

    std::string DataPage(std::uint32_t owner, const std::vector<MadeRow>& rows) const {
        ByteWriter page(Number(0x0101, 2));
        page.Zeros(m_layout.m_pageSize);
        page.Put(4, owner, 4).Put(m_layout.m_rowCount, rows.size(), 2);
        std::size_t end = m_layout.m_pageSize;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            end -= rows[i].m_bytes.size();
            page.Put(end, rows[i].m_bytes);
            page.Put(m_layout.m_rowStarts + 2 * i, end | rows[i].m_flags, 2);
        }
        return page.Bytes();
    }

    void WriteDefinition(std::uint32_t first, const std::string& bytes) {
        constexpr std::size_t PageHeader = 8;
        std::uint32_t page = first;
        m_pages[page] = ByteWriter(bytes.substr(0, m_layout.m_pageSize)).Zeros(m_layout.m_pageSize);
        const std::size_t part = m_layout.m_pageSize - PageHeader;
        for (std::size_t start = m_layout.m_pageSize; start < bytes.size(); start += part) {
            const std::uint32_t next = AddPage(Number(0x0102, PageHeader) + bytes.substr(start, part));
            m_pages[page].Put(4, next, 4);
            page = next;
        }
    }

    std::string ColumnEntry(const MadeColumn& column) const {
        ByteWriter entry;
        entry.Zeros(m_layout.m_columnSize).Put(0, static_cast<std::uint8_t>(column.m_type), 1);
        entry.Put(m_layout.m_columnDetails, column.m_details, 4);
        entry.Put(m_layout.m_columnNumber, column.m_number, 2);
        entry.Put(m_layout.m_columnVariableIndex, column.m_variable, 2);
        entry.Put(m_layout.m_columnPosition, column.m_number, 2);
        entry.Put(m_layout.m_columnFlags, column.m_flags | (column.m_fixedAt ? 1U : 0U), 1);
        if (!m_layout.m_isJet3) {
            entry.Put(16, column.m_extraFlags, 1);
        }
        entry.Put(m_layout.m_columnOffset, column.m_fixedAt.value_or(0xEEEE), 2);
        return entry.Put(m_layout.m_columnLength, column.m_length, 2).Bytes();
    }

    std::string SizedName(const std::string& name) const {
        return Number(Name(name).size(), m_layout.m_nameLengthSize) + Name(name);
    }

    std::string RealIndexEntry(const MadeIndex& index) const {
        ByteWriter entry(std::string(m_layout.m_realIndexSize, '\0'));
        for (std::size_t i = 0; i < 10; ++i) {
            const bool used = i < index.m_columns.size();
            const std::size_t offset = m_layout.m_indexColumns + 3 * i;
            entry.Put(offset, used ? index.m_columns[i].m_number : 0xFFFFU, 2);
            entry.Put(offset + 2, used && index.m_columns[i].m_isAscending ? 1 : 0, 1);
        }
        entry.Put(m_layout.m_indexRoot, index.m_root, 4).Put(m_layout.m_indexFlags, index.m_flags, 1);
        return entry.Bytes();
    }

    std::string LogicalIndexEntry(std::size_t place, const MadeIndex& index) const {
        ByteWriter entry(std::string(m_layout.m_logicalIndexSize, '\0'));
        entry.Put(m_layout.m_logicalNumber, place, 4).Put(m_layout.m_logicalNumber + 4, place, 4);
        entry.Put(m_layout.m_logicalNumber + 9, 0xFFFFFFFF, 4);
        return entry.Put(m_layout.m_logicalNumber + 19, index.m_kind, 1).Bytes();
    }

    // A row of its parts. Without variable columns it ends with the fixed part and the mask.
    std::string Joined(std::uint16_t count, const std::string& fixed,
                       const std::vector<std::string>& variable, const std::string& mask,
                       std::size_t padding) const {
        const std::size_t size = m_layout.m_rowNumberSize;
        ByteWriter row(Number(count, size) + fixed);
        if (variable.empty()) {
            return row.Text(mask).Bytes();
        }
        std::vector<std::size_t> starts;
        for (const std::string& value : variable) {
            starts.push_back(row.Bytes().size());
            row.Text(value);
        }
        starts.push_back(row.Bytes().size());
        row.Zeros(row.Bytes().size() + padding);
        for (std::size_t i = starts.size(); i-- > 0;) {
            row.Number(starts[i], size);
        }
        if (m_layout.m_isJet3) {
            row.Text(Jumps(starts, row.Bytes().size() + 1 + mask.size()));
        }
        return row.Number(variable.size(), size).Text(mask).Bytes();
    }

    // In Access 97: for each multiple of 256 the first column whose start is not below it, the last multiple
    // first; 0xFF where there is none. A row has one entry for each full 256 bytes.
    static std::string Jumps(const std::vector<std::size_t>& starts, std::size_t sizeWithout) {
        std::size_t count = 0;
        while ((sizeWithout + count - 1) / 256 > count) {
            ++count;
        }
        std::string jumps;
        for (std::size_t jump = count; jump > 0; --jump) {
            std::size_t column = 0;
            while (column < starts.size() && starts[column] < 256 * jump) {
                ++column;
            }
            jumps += static_cast<char>(column < starts.size() ? column : 0xFF);
        }
        return jumps;
    }

    const access::Layout& m_layout;
    std::uint8_t m_version;
    std::vector<ByteWriter> m_pages;
    std::uint32_t m_catalogMap = 0;
    std::vector<KnownTable> m_tables;
    std::vector<MadeRow> m_entries;
};

}  // namespace quillet::test
