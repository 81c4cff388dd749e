// Reads Access files into plain values to be compared.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/access/File.h"
#include "Quillet/base/Utf8.h"
#include "support/AccessPages.h"

namespace quillet::test {

inline std::string Utf8Of(platform::WideView text) {
    std::string bytes;
    AppendUtf8(text, bytes);
    return bytes;
}

inline std::string HexOf(access::ByteView bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 3> digits;
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        text += digits.data();
    }
    return text;
}

inline std::string RealText(double number) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.17g", number);
    return text.data();
}

// The value as a text that shows its kind.
inline std::string Shown(const access::Value& value) {
    using access::Value;
    switch (value.m_kind) {
        case Value::Null:
            return "null";
        case Value::Boolean:
            return value.m_integer != 0 ? "true" : "false";
        case Value::Integer:
            return std::to_string(value.m_integer);
        case Value::Money:
            return "money " + std::to_string(value.m_integer);
        case Value::Single:
            return "single " + RealText(value.m_real);
        case Value::Double:
            return RealText(value.m_real);
        case Value::Date:
            return "date " + RealText(value.m_real);
        case Value::ExtendedDate:
            return "day " + std::to_string(value.m_integer) + " ticks " + std::to_string(value.m_ticks);
        case Value::Text:
            return "'" + Utf8Of(value.m_text) + "'";
        case Value::Bytes:
            return "bytes " + HexOf(value.m_bytes);
        case Value::Guid:
            return "guid " + HexOf(value.m_bytes);
        case Value::Exact:
            return "exact " + value.m_numeric.ToText();
        case Value::Complex:
            return "complex " + std::to_string(value.m_integer);
    }
    return "?";
}

using ShownRow = std::vector<std::string>;

// A row with its place.
struct ReadRow {
    access::RowPointer m_place;
    ShownRow m_values;
};

// All rows that the table gives.
inline std::vector<ReadRow> RowsWithPlaces(access::File& file, const access::TableDefinition& table) {
    std::vector<ReadRow> rows;
    access::RowCursor cursor = file.OpenRows(table);
    while (cursor.Next()) {
        ReadRow& row = rows.emplace_back();
        row.m_place = cursor.Place();
        for (std::size_t i = 0; i < table.m_columns.size(); ++i) {
            access::Value value;
            cursor.Read(i, value);
            row.m_values.push_back(Shown(value));
        }
    }
    return rows;
}

inline std::vector<ShownRow> RowsOf(access::File& file, const access::TableDefinition& table) {
    std::vector<ShownRow> rows;
    for (ReadRow& row : RowsWithPlaces(file, table)) {
        rows.push_back(std::move(row.m_values));
    }
    return rows;
}

// A file that a test made, with what was found damaged.
class OpenedFile {
public:
    explicit OpenedFile(AccessPages& pages) : OpenedFile(pages.File()) {}
    explicit OpenedFile(std::unique_ptr<platform::RandomAccessFile> file)
        : m_file(std::make_unique<access::File>(std::move(file), m_log)) {}

    access::File& File() { return *m_file; }

    const access::CatalogEntry& Entry(const std::string& name) const {
        for (const access::CatalogEntry& entry : m_file->Catalog()) {
            if (Utf8Of(entry.m_name) == name) {
                return entry;
            }
        }
        throw std::out_of_range(name);
    }

    access::TableDefinition Table(const std::string& name) { return m_file->ReadDefinition(Entry(name)); }

    std::vector<ShownRow> Rows(const std::string& name) {
        const access::TableDefinition table = Table(name);
        return RowsOf(*m_file, table);
    }

    // What was added to the log.
    std::vector<std::string> Damage() const {
        std::vector<std::string> texts;
        for (const access::Error& error : m_log.First()) {
            texts.emplace_back(error.what());
        }
        return texts;
    }

private:
    access::DamageLog m_log;
    std::unique_ptr<access::File> m_file;
};

// The text of the error that the call throws; "none" if it throws nothing.
inline std::string AccessErrorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const access::Error& error) {
        return error.what();
    }
    return "none";
}

// For tests that hold for every layout.
struct LayoutName {
    template <typename Info>
    std::string operator()(const Info& info) const {
        return info.param->m_isJet3 ? "Access97" : "Access2000";
    }
};

inline AccessPages PagesOf(const access::Layout& layout) {
    return AccessPages(layout, layout.m_isJet3 ? 0 : 1);
}

}  // namespace quillet::test
