// An Access file: its catalog, its tables and their rows.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/access/Error.h"
#include "Quillet/access/Header.h"
#include "Quillet/access/Pager.h"
#include "Quillet/access/Properties.h"
#include "Quillet/access/RowCursor.h"
#include "Quillet/access/TableDefinition.h"
#include "Quillet/access/TextDecoder.h"

namespace quillet::access {

// An object of the file, as its catalog lists it.
struct CatalogEntry {
    enum eType : std::int16_t { Table = 1, Database = 2, Container = 3, OdbcLink = 4, Query = 5, Link = 6 };

    WideString m_name;
    std::int16_t m_type = 0;
    std::uint32_t m_flags = 0;
    std::int32_t m_id = 0;
    // Of its row in the catalog.
    RowPointer m_place;

    // A table that a user made, or that Access lists among those.
    bool IsUserTable() const;
    // A table of another file.
    bool IsLinkedTable() const { return m_type == OdbcLink || m_type == Link; }
    // The first page of a table's definition.
    PageNumber DefinitionPage() const { return static_cast<PageNumber>(m_id); }
};

// Used from one thread at a time.
class File {
public:
    // Throws Error if the file can't be read, or its catalog. Damage is added to the log, which must outlive
    // the file.
    static std::unique_ptr<File> Open(const std::string& path, DamageLog& log);
    File(std::unique_ptr<platform::RandomAccessFile> file, DamageLog& log);

    const Header& FileHeader() const { return m_header; }
    const std::vector<CatalogEntry>& Catalog() const { return m_catalog; }
    Pager& Pages() { return m_pager; }

    // Throws Error, which names the table, if its definition can't be read. A calculated column has the type
    // of its results.
    TableDefinition ReadDefinition(const CatalogEntry& table);

    // The rows of a table. The definition must outlive the cursor.
    RowCursor OpenRows(const TableDefinition& table);

private:
    // A table's definition page, and a page that names it as its owner.
    using OwnedPage = std::pair<std::uint32_t, PageNumber>;

    std::vector<PageNumber> RowPages(const TableDefinition& table);
    std::vector<PageNumber> PagesByOwner(PageNumber owner);
    void FindOwners();
    void ReadCatalog();
    void SetResultTypes(const CatalogEntry& entry, TableDefinition& table);
    std::optional<Properties> ReadProperties(const CatalogEntry& entry);

    DamageLog& m_log;
    Header m_header;
    TextDecoder m_texts;
    Pager m_pager;
    TableDefinition m_catalogDefinition;
    std::vector<CatalogEntry> m_catalog;
    // All data pages in the order of their owners, once a table's own map could not be read.
    std::vector<OwnedPage> m_owners;
    bool m_areOwnersKnown = false;
};

}  // namespace quillet::access
