// What the lower classes of the model tell the database that they belong to. An item that belongs to none
// tells nobody.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Quillet/Db_LogEntry.h"

class DbDatabase;
class DbItem;
class DbTableData;
class DbTableDescr;

namespace quillet {

class Upcalls {
public:
    // The database as an item, and null for null.
    static DbItem* AsItem(DbDatabase* database);
    // Expires with the database.
    static std::weak_ptr<DbDatabase*> LifeTokenOf(const DbDatabase& database);
    // Forgets all tables.
    static void Clear(DbDatabase& database);
    // The current state counts as unchanged from now on.
    static void Sync(DbDatabase& database);
    // The number of the next query table. All databases of the process share the count.
    static std::int32_t NextQueryNumber();

    // Whether the database has begun to read its source.
    static bool HasBegunToRead(DbItem* database);

    // Adds a line to the log of the database that item is; nothing for any other item.
    static void Log(DbItem* item, const DbLogEntry& entry);

    // The fields of the descriptor are about to change: rows that wait to be read are read now.
    static void FieldsWillChange(DbItem* database, const DbTableDescr& descr);

    // A field was added at the index, or removed from there: changes the rows accordingly. If it throws, no
    // row was changed.
    static void FieldsChanged(DbItem* database, const DbTableDescr& descr, uint64 index, bool added);

    // Reads the rows in the XML text that a table kept into the table that it names; throws as
    // DbDatabase::ParseXmlTableData. False if there is no database to read them.
    static bool ParseRows(DbItem* database, const DbTableData& data, const CString& xml);

    // Called before and after all rows of the data are deleted, including those that still wait in the file.
    static void RowsWillBeDeleted(DbItem* database, const DbTableData& data);
    static void RowsDeleted(DbItem* database, const DbTableData& data);

    // How many rows of the data a condition holds for; -1 for a text that is no condition, and for data of no
    // database.
    static std::int64_t CountWhere(DbItem* database, DbTableData& data, const CString& condition);

    // The name under which the data is registered; empty for none.
    static CString TableName(DbItem* database, const DbTableData& data);

    // The database detaches items that are deleted next, so that each need not be searched for among the
    // others.
    static void Detach(DbDatabase& database, const std::vector<DbItem*>& items);
};

}  // namespace quillet
