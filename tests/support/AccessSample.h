// A made Access file with a little of everything that a reader meets.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/AccessPages.h"

namespace quillet::test {

// A table of all types, with a null, an empty and a long value of each kind.
inline MadeTable TypesTable() {
    const auto fixed = MadeColumn::Fixed;
    const auto variable = MadeColumn::Variable;
    return {{fixed("boolean", eColumnType::Boolean, 0, 0, 0), fixed("byte", eColumnType::Byte, 1, 0, 1),
             fixed("integer", eColumnType::Integer, 2, 1, 2), fixed("long", eColumnType::Long, 3, 3, 4),
             fixed("money", eColumnType::Money, 4, 7, 8), fixed("single", eColumnType::Single, 5, 15, 4),
             fixed("double", eColumnType::Double, 6, 19, 8), fixed("date", eColumnType::Date, 7, 27, 8),
             fixed("guid", eColumnType::Guid, 8, 35, 16), fixed("numeric", eColumnType::Numeric, 9, 51, 17),
             fixed("big", eColumnType::BigInteger, 10, 68, 8),
             fixed("extended", eColumnType::ExtendedDate, 11, 76, 42),
             variable("binary", eColumnType::Binary, 12, 0), variable("text", eColumnType::Text, 13, 1),
             variable("memo", eColumnType::Memo, 14, 2), variable("object", eColumnType::Ole, 15, 3)},
            {{"PrimaryKey", {{3, true}}, 0x89, 1, 0}}};
}

inline MadeValues TypesValues(const AccessPages& pages, std::uint32_t seed, const std::string& memo,
                              const std::string& object) {
    const std::string number = Number(seed * 0x1234567ULL, 8);
    return {seed % 2 == 0 ? std::optional<std::string>("") : std::nullopt,
            number.substr(0, 1),
            number.substr(0, 2),
            number.substr(0, 4),
            number,
            Number(0x3FC00000 + seed, 4),
            Number(0x3FF0000000000000 + seed, 8),
            Number(0x40E38E0000000000 + seed, 8),
            number + number,
            "\x80" + number + number,
            number,
            "0000000000000737592:0000000000" + std::to_string(100000000 + seed) + ":7",
            number.substr(0, seed % 8),
            seed % 5 == 0 ? std::nullopt : std::optional(pages.Name("text " + std::to_string(seed))),
            memo,
            object};
}

// Tables "types", with values of all kinds and moved rows, and "wide", whose definition takes several pages.
inline std::string AccessSample(const access::Layout& layout) {
    AccessPages pages(layout, layout.m_isJet3 ? 0 : 1);
    const auto pointer = [](std::uint32_t page, std::uint32_t row) { return Number(page << 8 | row, 4); };
    const std::uint32_t last = pages.AddLongValuePage({{pointer(0, 0) + std::string(300, 'z')}});
    const std::uint32_t first = pages.AddLongValuePage(
        {{pointer(last, 0) + std::string(500, 'y')}, {pages.Name("the memo of one piece")}});
    const std::string memo = pages.Name("memo");
    const std::string inRow = Number(0x80000000 + memo.size(), 4) + Number(0, 8) + memo;
    const std::string onePiece = Number(0x40000010, 4) + pointer(first, 1) + Number(0, 4);
    const std::string chain = Number(800, 4) + pointer(first, 0) + Number(0, 4);

    const MadeTable types = TypesTable();
    const std::uint32_t table = pages.AddTable("types", types);
    std::vector<MadeRow> rows;
    for (std::uint32_t i = 0; i < 5; ++i) {
        rows.push_back({pages.Row(types, TypesValues(pages, i, i % 2 == 0 ? inRow : onePiece, chain))});
    }
    rows.push_back({rows.front().m_bytes, MadeRow::MovedHere});
    rows.push_back({rows.front().m_bytes, MadeRow::Deleted});
    const std::uint32_t page = pages.AddRows(table, rows);
    pages.AddRows(table, {{pointer(page, 5), MadeRow::Moved}, {rows.back().m_bytes}});

    MadeTable wide;
    for (std::uint16_t i = 0; i < 150; ++i) {
        wide.m_columns.push_back(
            MadeColumn::Variable("column number " + std::to_string(i), eColumnType::Text, i, i));
    }
    const std::uint32_t wideTable = pages.AddTable("wide", wide);
    pages.AddRows(wideTable, {{pages.Row(wide, MadeValues(150, pages.Name("x")))}});
    return pages.Bytes();
}

}  // namespace quillet::test
