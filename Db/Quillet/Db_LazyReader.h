// Reads a database from its source when it is needed: the header first, then the structure of all tables,
// then one table's rows after the other.
#pragma once

#include <deque>

#include "base/CString.h"

class DbDatabase;
class DbSource;
class DbTableData;
class DbTableDescr;

namespace quillet {

class AccessImporter;
class DbLog;
class DbRegistry;

class DbLazyReader {
public:
    DbLazyReader(DbDatabase& owner, DbSource& source, DbRegistry& registry, AccessImporter& importer,
                 DbLog& log)
        : m_owner(owner), m_source(source), m_registry(registry), m_importer(importer), m_log(log) {}

    // Everything is still to be read, or nothing is.
    void Reset();
    void MarkRead();

    // Reads the header and the structure of the body of a sequential source, or the whole of another one,
    // also of an Access file; adds the header and properties tables where the file has none. What was read
    // counts as unchanged. Once only.
    void ReadStructure();
    // Cuts the next table's rows out of a sequential source and hands them to the table that they name.
    // Null, with the source released, when no table is unread or the file has no more; in that case with a
    // line in the log.
    DbTableData* ReadNextTable();
    // Reads tables in the order of the file until the given one has its rows.
    void ReadUntil(const DbTableData* data);
    void ReadAll();
    // The table is about to be deleted: its rows are no more waited for.
    void Forget(const DbTableData* data);

private:
    void ReadSequentially();
    void CheckEnd();
    bool IsUnread(const DbTableData* data) const;
    DbTableData* TakeUnread(const CString& xml);

    DbDatabase& m_owner;
    DbSource& m_source;
    DbRegistry& m_registry;
    AccessImporter& m_importer;
    DbLog& m_log;
    bool m_pending = true;
    // The tables of a sequential source whose rows still stand in the file, in the order of the structure.
    std::deque<DbTableData*> m_unread;
};

}  // namespace quillet
