// What reading a whole Access file gives, in a form to be compared with that of the file after damage.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/access/File.h"
#include "support/MemoryFile.h"

namespace quillet::test {

using access::PageNumber;
using PageSet = std::set<PageNumber>;

// A digest of a row's values; every byte of them is looked at.
class ValueDigest {
public:
    void Add(const access::Value& value) {
        AddNumber(static_cast<std::uint64_t>(value.m_kind));
        switch (value.m_kind) {
            case access::Value::Null:
                break;
            case access::Value::Text:
                for (const WCHAR unit : value.m_text) {
                    AddNumber(unit);
                }
                break;
            case access::Value::Bytes:
            case access::Value::Guid:
                for (const std::uint8_t byte : value.m_bytes) {
                    AddNumber(byte);
                }
                break;
            case access::Value::Single:
            case access::Value::Double:
            case access::Value::Date:
                AddReal(value.m_real);
                break;
            case access::Value::Exact:
                for (const std::uint32_t word : value.m_numeric.m_words) {
                    AddNumber(word);
                }
                AddNumber(value.m_numeric.m_isNegative ? 1 : 0);
                break;
            default:
                AddNumber(static_cast<std::uint64_t>(value.m_integer));
                break;
        }
    }
    std::uint64_t Get() const { return m_digest; }

private:
    void AddNumber(std::uint64_t number) {
        constexpr std::uint64_t Prime = 0x100000001B3;
        m_digest = (m_digest ^ number) * Prime;
    }
    void AddReal(double real) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &real, sizeof bits);
        AddNumber(bits);
    }

    std::uint64_t m_digest = 0xCBF29CE484222325;
};

// Reads all rows of a table, each value of each; calls taken(place, digest) for each row.
template <typename Taken>
void ReadTable(access::File& file, const access::TableDefinition& table, const Taken& taken) {
    access::RowCursor rows = file.OpenRows(table);
    while (rows.Next()) {
        ValueDigest digest;
        for (std::size_t i = 0; i < table.m_columns.size(); ++i) {
            access::Value value;
            rows.Read(i, value);
            digest.Add(value);
        }
        taken(rows.Place(), digest.Get());
    }
}

// Reads everything that the file has. Only an Error may get in the way, of the file or of a table.
inline void ReadEverything(std::unique_ptr<platform::RandomAccessFile> bytes) {
    access::DamageLog log;
    try {
        access::File file(std::move(bytes), log);
        for (const access::CatalogEntry& entry : file.Catalog()) {
            try {
                const access::TableDefinition table = file.ReadDefinition(entry);
                ReadTable(file, table, [](access::RowPointer, std::uint64_t) {});
            } catch (const access::Error&) {
                // A table that can't be read leaves the others.
            }
        }
    } catch (const access::Error&) {
        // Nothing can be read.
    }
}

// A table as it was read: its rows by their places, and the pages that were needed.
struct TableImage {
    std::map<std::pair<PageNumber, std::uint8_t>, std::uint64_t> m_rows;
    PageSet m_needed;
    // Those of the needed pages that have its rows and nothing else.
    PageSet m_rowPages;
    bool m_hasMovedRows = false;
};

// Whether a row of the page is elsewhere.
inline bool HasMovedRows(access::Pager& pager, PageNumber number) {
    const access::DataPage page(pager.Get(number), pager.PageLayout());
    for (std::size_t row = 0; row < page.RowCount(); ++row) {
        if (page.RowAt(row).m_isMoved) {
            return true;
        }
    }
    return false;
}

// By the ids of the tables in the catalog.
using FileImage = std::map<std::int32_t, TableImage>;

inline PageSet PagesRead(const MemoryFile::Plan& plan, std::size_t pageSize) {
    PageSet pages;
    for (const std::uint64_t position : plan.m_positions) {
        pages.insert(static_cast<PageNumber>(position / pageSize));
    }
    return pages;
}

// A whole file. Each table is read from a file that was opened for it alone, to know the pages that it needs.
inline FileImage ImageOf(const std::string& bytes) {
    FileImage image;
    access::DamageLog log;
    access::File opened(std::make_unique<MemoryFile>(bytes), log);
    const std::size_t pageSize = opened.FileHeader().PageLayout().m_pageSize;
    for (const access::CatalogEntry& entry : opened.Catalog()) {
        if (entry.m_type != access::CatalogEntry::Table) {
            continue;
        }
        const auto plan = std::make_shared<MemoryFile::Plan>();
        access::File file(std::make_unique<MemoryFile>(bytes, plan), log);
        TableImage& table = image[entry.m_id];
        const access::TableDefinition definition = file.ReadDefinition(entry);
        ReadTable(file, definition, [&](access::RowPointer place, std::uint64_t digest) {
            table.m_rows[{place.m_page, place.m_row}] = digest;
            table.m_rowPages.insert(place.m_page);
        });
        table.m_needed = PagesRead(*plan, pageSize);
        table.m_hasMovedRows = std::ranges::any_of(
            table.m_rowPages, [&](PageNumber page) { return HasMovedRows(file.Pages(), page); });
    }
    return image;
}

// The entry of the table with that id; that of the catalog itself even if the catalog has lost it. Null if
// there is none.
inline const access::CatalogEntry* EntryOf(const access::File& file, std::int32_t id) {
    static const access::CatalogEntry catalog{{}, access::CatalogEntry::Table, 0, 2, {}};
    for (const access::CatalogEntry& entry : file.Catalog()) {
        if (entry.m_id == id && entry.m_type == access::CatalogEntry::Table) {
            return &entry;
        }
    }
    return id == catalog.m_id ? &catalog : nullptr;
}

// The rows that the file has now, of the table with that id; none if it can't be read.
inline TableImage TableOf(const std::string& bytes, std::int32_t id) {
    TableImage table;
    access::DamageLog log;
    try {
        access::File file(std::make_unique<MemoryFile>(bytes), log);
        if (const access::CatalogEntry* const entry = EntryOf(file, id)) {
            const access::TableDefinition definition = file.ReadDefinition(*entry);
            ReadTable(file, definition, [&](access::RowPointer place, std::uint64_t digest) {
                table.m_rows[{place.m_page, place.m_row}] = digest;
            });
        }
    } catch (const access::Error&) {
        // What was read before counts.
    }
    return table;
}

}  // namespace quillet::test
