// Reads the catalog document, whole or in the pieces that sequential reading cuts out.
#pragma once

#include <cstddef>

#include "base/CString.h"
#include "xml/Node.h"

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

    // Reads the rows of a <table> element's text into the table that it names. Throws DbException "Invalid
    // pointer", by pointer.
    void ReadTableText(const CString& xml);

    void LogInvalidFormat();

private:
    std::size_t ReadStructure(const xml::Node& structure);
    void ReadData(const xml::Node& data);

    DbRegistry& m_registry;
    DbLog& m_log;
};

}  // namespace quillet
