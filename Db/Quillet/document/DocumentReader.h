// Reads the catalog document, whole or in the pieces that sequential reading cuts out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string_view>

#include "Quillet/Db_LogEntry.h"
#include "Quillet/xml/Node.h"

class DbItem;
class DbTableData;
class DbTableDescr;

namespace quillet {

namespace xml {
class Document;
}

class Log;
class Registry;
class Omissions;
struct ScannedRows;

// A table whose rows are still in the file, and its name there.
struct UnreadTable {
    CString m_name;
    DbTableData* m_data;
    // Whether the log says that it was not reached.
    bool m_isReported = false;
};
using Unread = std::deque<UnreadTable>;

// What sequential reading found in a file, by the places where the elements begin.
struct ScannedPlaces {
    // How many tables the structures of header and body describe.
    std::size_t m_described = 0;
    // The structures and the list of the header's rows.
    std::set<std::uint64_t> m_lists;
    // The body's rows, by the lowered names of the tables.
    std::map<CString, std::uint64_t> m_tables;
};

// What is left out gets a line in the log and is noted as an omission. Throws only std::bad_alloc, and what a
// member says.
class DocumentReader {
public:
    DocumentReader(Registry& registry, Log& log, Omissions& omissions)
        : m_registry(registry), m_log(log), m_omissions(omissions) {}

    // Registers the tables of a file and reads their rows. A file that is no catalog leaves a line in the log
    // and the tables that were read before the fault.
    void ReadDatabase(const CString& path);

    // Reads the rows of the unread tables from the whole of a file that was scanned; tables for which the
    // file has none stay in the list. Notes what else in the file was not read, and where scanning took
    // something else, such as text in a comment, for a part of the catalog. What was read counts as
    // unchanged.
    void ReadUnread(const CString& path, const ScannedPlaces& scanned, Unread& unread);

    // Registers the tables of a <structure> element's text; returns how many it describes. Text that is none
    // leaves a line in the log.
    std::size_t ReadStructureText(const CString& xml);

    // Whether a <structure> element's text describes a table of that name.
    static bool DescribesTable(const CString& xml, const CString& name);

    // Reads the rows in a <data> element's text. Text that is none leaves a line in the log.
    void ReadDataText(const CString& xml);

    // Reads the rows of a <table> element's text into the table that it names. Throws DbException
    // "Invalid pointer", by pointer, where the text is no such element or the table is unknown.
    void ReadTableText(const CString& xml);

    // Notes rows that belong to no unread table: the table has no structure, or has rows already.
    void OmitRows(const CString& name);

    // Notes that the file is no complete catalog, for a reason that may be empty. A blank file omits nothing.
    void NoteUnreadable(const CString& path, const CString& why);

    // A table that belongs to no database.
    struct Table {
        std::unique_ptr<DbTableDescr> m_descr;
        std::unique_ptr<DbTableData> m_data;
    };
    // The first rows of the body's table of that name in a catalog file, at least so many unless there are
    // fewer; the other rows are counted and not kept. None where CountRows gives nothing, and for an unknown
    // name: then the file has to be read.
    static Table ReadFirstRows(const CString& path, const CString& table, std::uint64_t rows);

    // The entry about a table whose rows could not all be read.
    static DbLogEntry MalformedRows(const CString& table);
    // The line about a file or text that is no complete catalog.
    static constexpr const char* InvalidFormat = "Invalid xml database file format";

private:
    // Rows of the body that are no longer in the document, by the places of their tables in its list.
    using Scanned = std::map<std::size_t, ScannedRows>;

    template <typename OnStructure, typename OnData>
    void Walk(const xml::Document& document, OnStructure onStructure, OnData onData);
    void NoteSiblings(const xml::Node& last, const char* parent);
    void NotePassedOver(const xml::Node& node, const char* parent);
    std::size_t ReadStructure(const xml::Node& structure);
    void ReadData(const xml::Node& data, const Scanned* scanned = nullptr);
    bool ScanDatabase(const CString& path, xml::Document& rest, Scanned& scanned) const;
    bool AreNew(const xml::Document& document) const;
    bool ScanTable(std::string_view text);
    void CheckList(const xml::Node& list, const ScannedPlaces& scanned);
    void ReadUnreadData(const xml::Node& data, const ScannedPlaces& scanned, std::set<CString>& names,
                        Unread& unread);
    void NoteEntities(const xml::Document& document);
    void ReadRows(DbTableData& data, const xml::Node& table, const CString& name,
                  const ScannedRows* scanned = nullptr);
    void Omit(const DbLogEntry& entry, const DbItem* part = nullptr);
    void LogUnreadable(const CString& path, const xml::Document& document);

    Registry& m_registry;
    Log& m_log;
    Omissions& m_omissions;
};

}  // namespace quillet
