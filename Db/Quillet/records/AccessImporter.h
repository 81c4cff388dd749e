// Copies the tables of an Access file into a database.
#pragma once

#include <vector>

#include "Quillet/base/CString.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"

class DbSource;
class DbTableData;
class DbTableDescr;

namespace quillet {

class Log;
class Registry;

// If rows of a replaced table still wait in a file, the caller must read them first.
class AccessImporter {
public:
    AccessImporter(const DbSource& source, Registry& registry, Log& log)
        : m_source(source), m_registry(registry), m_log(log) {}

    // Reads the whole file of the source, with a line in the log, and copies it. If a table can't be read,
    // false, and nothing is copied.
    bool Import();
    // See DbDatabase::CopyFrom and DbDatabase::CopyTableFrom.
    void CopyFrom(const DBACCESS_ALL& all);
    void CopyTable(const CString& name, const DBACCESS_VECTOR& records);

    // Lines about the tables without rows.
    const std::vector<CString>& Report() const { return m_report; }

private:
    void CopyRows(const CString& name, const DBACCESS_VECTOR& records, DbTableDescr& descr,
                  DbTableData& data);
    void ReportNoRows(const CString& name, const DBACCESS_VECTOR& records);

    const DbSource& m_source;
    Registry& m_registry;
    Log& m_log;
    std::vector<CString> m_report;
};

}  // namespace quillet
