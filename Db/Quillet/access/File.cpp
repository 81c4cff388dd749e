#include "Quillet/access/File.h"

#include <algorithm>
#include <array>

#include "Quillet/access/UsageMap.h"
#include "Quillet/base/Utf8.h"

namespace quillet::access {
namespace {

constexpr PageNumber CatalogPage = 2;

std::unique_ptr<platform::RandomAccessFile> OpenFile(const std::string& path) {
    std::string why;
    std::unique_ptr<platform::RandomAccessFile> file = platform::RandomAccessFile::Open(path, &why);
    if (!file) {
        throw Error(Error::Unreadable, why);
    }
    return file;
}

std::string NameOf(const CatalogEntry& entry) {
    std::string name;
    AppendUtf8(entry.m_name, name);
    return name;
}

// The positions of the catalog's columns.
class CatalogColumns {
public:
    explicit CatalogColumns(const TableDefinition& definition)
        : m_name(Find(definition, OLESTR("Name"))),
          m_type(Find(definition, OLESTR("Type"))),
          m_flags(Find(definition, OLESTR("Flags"))),
          m_id(Find(definition, OLESTR("Id"))) {}

    // False if the entry is damaged.
    bool Read(RowCursor& rows, CatalogEntry& entry) const {
        Value value;
        if (!rows.Read(m_name, value)) {
            return false;
        }
        entry.m_name = value.m_kind == Value::Text ? WideString(value.m_text) : WideString();
        std::int64_t type = 0;
        std::int64_t flags = 0;
        std::int64_t id = 0;
        if (!ReadNumber(rows, m_type, type) || !ReadNumber(rows, m_flags, flags) ||
            !ReadNumber(rows, m_id, id)) {
            return false;
        }
        entry.m_type = static_cast<std::int16_t>(type);
        entry.m_flags = static_cast<std::uint32_t>(flags);
        entry.m_id = static_cast<std::int32_t>(id);
        return true;
    }

private:
    static std::size_t Find(const TableDefinition& definition, platform::WideView name) {
        const std::optional<std::size_t> position = definition.FindColumn(name);
        if (!position) {
            throw DamagedPage(definition.m_page, "the catalog lacks a column");
        }
        return *position;
    }

    // A null leaves the number as it is.
    static bool ReadNumber(RowCursor& rows, std::size_t column, std::int64_t& number) {
        Value value;
        const bool isWhole = rows.Read(column, value);
        if (value.m_kind == Value::Integer) {
            number = value.m_integer;
        }
        return isWhole;
    }

    std::size_t m_name;
    std::size_t m_type;
    std::size_t m_flags;
    std::size_t m_id;
};

}  // namespace

bool CatalogEntry::IsUserTable() const {
    constexpr std::uint32_t SystemFlags = 0x80000002;
    return m_type == Table && (m_flags & SystemFlags) == 0;
}

std::unique_ptr<File> File::Open(const std::string& path, DamageLog& log) {
    return std::make_unique<File>(OpenFile(path), log);
}

File::File(std::unique_ptr<platform::RandomAccessFile> file, DamageLog& log)
    : m_log(log), m_header(Header::Read(*file)), m_texts(m_header), m_pager(std::move(file), m_header) {
    ReadCatalog();
}

void File::ReadCatalog() {
    m_catalogDefinition = TableDefinition::Read(m_pager, m_texts, CatalogPage, m_log);
    const CatalogColumns columns(m_catalogDefinition);
    RowCursor rows = OpenRows(m_catalogDefinition);
    while (rows.Next()) {
        CatalogEntry entry;
        entry.m_place = rows.Place();
        if (columns.Read(rows, entry)) {
            m_catalog.push_back(std::move(entry));
        }
    }
}

TableDefinition File::ReadDefinition(const CatalogEntry& table) {
    try {
        TableDefinition definition = TableDefinition::Read(m_pager, m_texts, table.DefinitionPage(), m_log);
        if (std::ranges::any_of(definition.m_columns, &Column::IsCalculated)) {
            SetResultTypes(table, definition);
        }
        return definition;
    } catch (const Error& error) {
        throw error.InTable(NameOf(table));
    }
}

// The definition of a calculated column can have another type than its values.
void File::SetResultTypes(const CatalogEntry& entry, TableDefinition& table) {
    const std::optional<Properties> properties = ReadProperties(entry);
    if (!properties) {
        return;
    }
    for (Column& column : table.m_columns) {
        const auto* const type = properties->OfColumn(column.m_name, OLESTR("ResultType"));
        if (column.IsCalculated() && type != nullptr && !type->empty() && type->front() != 0) {
            column.m_type = static_cast<eColumnType>(type->front());
        }
    }
}

std::optional<Properties> File::ReadProperties(const CatalogEntry& entry) {
    const std::optional<std::size_t> column = m_catalogDefinition.FindColumn(OLESTR("LvProp"));
    RowCursor rows = OpenRows(m_catalogDefinition);
    while (column && rows.Next()) {
        Value value;
        if (rows.Place() == entry.m_place) {
            rows.Read(*column, value);
            return value.m_kind == Value::Bytes ? std::optional(Properties(value.m_bytes, m_texts))
                                                : std::nullopt;
        }
    }
    return std::nullopt;
}

RowCursor File::OpenRows(const TableDefinition& table) {
    return {m_pager, m_texts, table, RowPages(table), m_log};
}

// The table's map tells its pages. If that is damaged, the pages tell their table.
std::vector<PageNumber> File::RowPages(const TableDefinition& table) {
    try {
        UsageMap::Members owned = UsageMap(m_pager, table.m_ownedMap).Pages(m_pager);
        if (owned.m_beyond == 0) {
            return std::move(owned.m_pages);
        }
        m_log.Add(DamagedPage(table.m_ownedMap.m_page, "a map names pages beyond the end of the file"));
    } catch (const Error& error) {
        if (error.Kind() == Error::Unreadable) {
            throw;
        }
        m_log.Add(error);
    }
    return PagesByOwner(table.m_page);
}

std::vector<PageNumber> File::PagesByOwner(PageNumber owner) {
    if (!m_areOwnersKnown) {
        FindOwners();
    }
    std::vector<PageNumber> pages;
    auto page = std::ranges::lower_bound(m_owners, OwnedPage(owner, 0));
    for (; page != m_owners.end() && page->first == owner; ++page) {
        pages.push_back(page->second);
    }
    return pages;
}

void File::FindOwners() {
    constexpr std::size_t OwnerOffset = 4;
    for (PageNumber number = 1; number < m_pager.PageCount(); ++number) {
        const Page page = m_pager.Get(number);
        if (page.Is(ePageType::Data)) {
            m_owners.emplace_back(page.U32(OwnerOffset), number);
        }
    }
    std::ranges::sort(m_owners);
    m_areOwnersKnown = true;
}

}  // namespace quillet::access
