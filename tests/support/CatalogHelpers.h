// Catalogs for database tests: documents built from parts, databases opened in both ways of reading, and
// their contents as text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/Db_Recordset.h"
#include "support/LogLines.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {

enum class Reading { Whole, Sequential };

inline void PrintTo(Reading reading, std::ostream* out) {
    *out << (reading == Reading::Whole ? "Whole" : "Sequential");
}

inline std::string ReadingName(const testing::TestParamInfo<Reading>& info) {
    return testing::PrintToString(info.param);
}

// Opens a file; the header and the structure are not read yet.
inline std::unique_ptr<DbDatabase> Open(const std::filesystem::path& path, Reading reading) {
    auto database = std::make_unique<DbDatabase>(CString(Utf8(path)));
    database->GetSource()->SetSequentialAccess(reading == Reading::Sequential);
    return database;
}

// Whether reading a valid catalog writes the line.
inline bool IsRoutine(const std::string& line) {
    for (const char* part : {" created, index = ", " xml source extracted in ", " data parsed in: "}) {
        if (line.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

inline std::size_t CountTroubles(DbDatabase& database) {
    const std::vector<std::string> lines = TakeLog(database);
    return lines.size() - static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), IsRoutine));
}

inline bool LogHolds(DbDatabase& database, const std::string& part) {
    return database.GetErrorLog().ToUtf8().find(part) != std::string::npos;
}

inline std::string CellText(const DbFieldValue& cell) {
    CString text;
    cell.ValueToString(text);
    return text.ToUtf8();
}

// The cell in text form.
inline std::string Cell(DbTableData* data, uint64 row, uint64 field) {
    return CellText((*data)[row].GetField(field));
}

using Strings = std::vector<std::string>;

inline Strings TableNames(DbDatabase& database) {
    Strings names;
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        names.push_back(database.GetTableName(i).ToUtf8());
    }
    return names;
}

inline Strings FieldNames(DbDatabase& database, const CString& table) {
    const DbTableDescr* const descr = database.GetTableDescr(table);
    Strings names;
    for (std::size_t i = 0; descr != nullptr && i < descr->size(); ++i) {
        names.push_back(descr->at(i)->GetName().ToUtf8());
    }
    return names;
}

// Each row with blanks between its cells, for the fields of the structure.
inline Strings RowsOf(DbTableData& data) {
    Strings rows;
    for (uint64 i = 0; i < data.size(); ++i) {
        const DbTableRow* const row = data.GetRow(static_cast<int>(i));
        std::string text;
        for (uint64 field = 0; row != nullptr && field < data.GetTableDescr()->size(); ++field) {
            text += (field == 0 ? "" : " ") + CellText(row->GetField(field));
        }
        rows.push_back(row == nullptr ? "no row" : text);
    }
    return rows;
}

inline Strings RowsOf(DbDatabase& database, const CString& table) {
    DbTableData* const data = database.GetTableData(table);
    return data == nullptr ? Strings{"no table"} : RowsOf(*data);
}

// All tables in their order: names, fields, and rows with the types of their values. Any change in these
// changes the text.
inline std::string Dump(DbDatabase& database) {
    std::string text;
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        DbTableData* const data = database.GetTableData(i);
        const DbTableDescr& descr = *database.GetTableDescr(i);
        text += "table " + database.GetTableName(i).ToUtf8() + '\n';
        for (const DbFieldDescr* const field : descr) {
            text += "field " + field->GetName().ToUtf8() + (field->IsKey() ? " key " : " ") +
                    std::to_string(field->GetType()) + '\n';
        }
        for (uint64 row = 0; row < data->size(); ++row) {
            text += "row";
            for (const DbFieldValue* const cell : (*data)[row]) {
                text += " " + std::to_string(cell->GetType()) + ":" + CellText(*cell);
            }
            text += '\n';
        }
    }
    return text;
}

// The message of the DbException that the call throws; empty if it throws none.
template <typename Call>
std::string ThrownMessage(Call call) {
    try {
        call();
    } catch (DbException* exception) {
        const std::string message = exception->Message().ToUtf8();
        exception->Delete();
        return message;
    }
    return {};
}

// Restores the process-wide settings.
class StaticsGuard {
public:
    StaticsGuard() = default;
    StaticsGuard(const StaticsGuard&) = delete;
    StaticsGuard& operator=(const StaticsGuard&) = delete;
    ~StaticsGuard() {
        DbSource::ForceXML = m_forceXml;
        DbSource::MaxBufferSize = m_maxBufferSize;
        DbDatabase::m_queriesCount = m_queriesCount;
        DbItem::m_changeCounter = m_changeCounter;
        DbRecordset::bookmarkid = m_bookmark;
    }

private:
    bool m_forceXml = DbSource::ForceXML;
    std::int32_t m_maxBufferSize = DbSource::MaxBufferSize;
    std::int32_t m_queriesCount = DbDatabase::m_queriesCount;
    std::int32_t m_changeCounter = DbItem::m_changeCounter;
    uint64 m_bookmark = DbRecordset::bookmarkid;
};

// One <table> element with the given content.
inline std::string TableXml(const std::string& name, const std::string& content) {
    return content.empty() ? "<table name=\"" + name + "\" />\n"
                           : "<table name=\"" + name + "\">\n" + content + "</table>\n";
}

inline std::string FieldXml(const std::string& name, int type) {
    return "<field name=\"" + name + "\" key=\"false\" type=\"" + std::to_string(type) +
           "\" required=\"0\" />\n";
}

constexpr int LongType = 3;
constexpr int DoubleType = 5;
constexpr int TextType = 8;

// The four lists of a catalog document.
struct CatalogParts {
    std::string m_headerStructure =
        TableXml("Header", FieldXml("title", TextType)) + TableXml("Properties", FieldXml("units", TextType));
    std::string m_headerData =
        TableXml("Header", "<row title=\"Small\" />\n") + TableXml("Properties", "<row units=\"mm\" />\n");
    std::string m_bodyStructure;
    std::string m_bodyData;

    std::string Xml() const {
        const auto list = [](const char* element, const std::string& content) {
            const std::string tag = element;
            return content.empty() ? "<" + tag + " />\n" : "<" + tag + ">\n" + content + "</" + tag + ">\n";
        };
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<database>\n<header>\n" +
               list("structure", m_headerStructure) + list("data", m_headerData) + "</header>\n<body>\n" +
               list("structure", m_bodyStructure) + list("data", m_bodyData) + "</body>\n</database>\n";
    }
};

// Tables Alpha (name, count; two rows), Beta (size; one row) and Gamma (note; no rows).
inline CatalogParts SmallParts() {
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("Alpha", FieldXml("name", TextType) + FieldXml("count", LongType)) +
                            TableXml("Beta", FieldXml("size", DoubleType)) +
                            TableXml("Gamma", FieldXml("note", TextType));
    parts.m_bodyData =
        TableXml("Alpha", "<row name=\"one\" count=\"1\" />\n<row name=\"two\" count=\"2\" />\n") +
        TableXml("Beta", "<row size=\"2.5\" />\n") + TableXml("Gamma", "");
    return parts;
}

inline std::string SmallCatalog() {
    return SmallParts().Xml();
}

}  // namespace quillet::test
