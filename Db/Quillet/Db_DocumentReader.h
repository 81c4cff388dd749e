// Reads the catalog document, whole or in the pieces that sequential reading cuts out.
#pragma once

#include <cstddef>

#include "base/CString.h"
#include "xml/Node.h"

class DbTableData;

namespace quillet {

class DbLog;
class DbRegistry;

class DbDocumentReader {
public:
    DbDocumentReader(DbRegistry& registry, DbLog& log) : m_registry(registry), m_log(log) {}

    // Registers the tables of a file and reads their rows. A file that is no catalog leaves a line in the log
    // and the tables that were read until the fault.
    void ReadDatabase(const CString& path);

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

    void LogInvalidFormat();

private:
    std::size_t ReadStructure(const xml::Node& structure);
    void ReadData(const xml::Node& data);
    void ReadRows(DbTableData& data, const xml::Node& table, const CString& name);

    DbRegistry& m_registry;
    DbLog& m_log;
};

}  // namespace quillet
