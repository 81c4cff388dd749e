// The rows of a catalog file straight into columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Quillet/Db_TableDescr.h"
#include "Quillet/rows/ScannedRows.h"

namespace quillet {

namespace platform {
class ReadableFile;
}

// Reads the body's rows from a file as they pass by, and keeps the rest of the document, which then is to be
// read as any document is. It knows what programs write and gives up on everything else: nothing has
// happened then, and the file has to be read in another way.
class CatalogScanner {
public:
    // The length of the tag at the beginning of a text; npos if the text does not hold it in whole.
    static std::size_t TagLength(std::string_view text);

    // Whether the rows are kept, or only counted.
    enum class Rows : std::uint8_t { Kept, Counted };

    explicit CatalogScanner(platform::ReadableFile& file, Rows rows = Rows::Kept)
        : m_file(file), m_rowsAre(rows) {}
    CatalogScanner(const CatalogScanner&) = delete;
    CatalogScanner& operator=(const CatalogScanner&) = delete;

    // Reads the file to its end. False if it gives up. Throws only std::bad_alloc.
    bool Scan();
    // Before a scan that counts rows: keeps the first rows of the body's table of that name, at least so many
    // unless there are fewer.
    void KeepFirstRows(const CString& table, std::uint64_t rows);
    // What it kept of that table: the structure, which the caller gets, null if there is none, and the rows.
    std::unique_ptr<DbTableDescr> TakeStructure();
    const ScannedRows& FirstRows() const { return m_firstRows; }
    bool HasMalformedStructure() const { return m_hasMalformedStructure; }

    // The document without the rows that were read.
    const std::string& Rest() const { return m_rest; }
    // By the place of their tables, from 0, in the list of the body's rows.
    std::map<std::size_t, ScannedRows>& Tables() { return m_tables; }

private:
    bool TakeTag();
    bool IsKnownDeclaration(std::string_view tag) const;
    bool StartElement(std::string_view tag, bool isEmpty);
    bool EndElement();
    bool ReadStructure(std::string_view text);
    bool ReadRows(std::string_view tag, ScannedRows& rows);
    bool ReadMore();
    std::string_view Ahead() const { return {m_buffer.data() + m_at, m_have - m_at}; }
    // Where the innermost open element stands: in the body's structure, in its rows, or elsewhere.
    bool IsIn(std::size_t list) const;

    platform::ReadableFile& m_file;
    Rows m_rowsAre;
    std::vector<char> m_buffer;
    std::size_t m_at = 0;
    std::size_t m_have = 0;
    std::string m_rest;
    // How many children each open element has had so far; the first count is that of the document.
    std::vector<std::size_t> m_children{0};
    // Where the body's structure begins in the rest.
    std::size_t m_structureStart = 0;
    // By lowered names.
    std::map<CString, std::unique_ptr<DbTableDescr>> m_structures;
    std::map<std::size_t, ScannedRows> m_tables;
    // Of all tables.
    std::size_t m_rows = 0;
    bool m_hasMalformedStructure = false;
    // The lowered name of the table whose first rows are kept, and how many.
    std::optional<CString> m_wanted;
    std::uint64_t m_wantedRows = 0;
    ScannedRows m_firstRows;
};

}  // namespace quillet
