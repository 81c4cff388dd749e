// The definition of a table: one that exists, or one that is being made.
#pragma once

#include <memory>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

class DbDatabase;

// Opens a table of a database, so that its fields and indexes can be seen and changed, or makes a new one:
// Create prepares it apart from the database, fields and indexes are added, and Append hands it over.
//
// It owns only the table between Create and Append. A definition whose table was deleted, or whose database
// is gone, is closed.
class QUILLET_API DbTableDef {
public:
    // Closed. The database is not owned and may be null.
    explicit DbTableDef(DbDatabase* db);
    // A copy is open on the same table. A table that was not appended is not copied: the copy is closed then.
    DbTableDef(const DbTableDef& other);
    DbTableDef& operator=(const DbTableDef& other);
    // Deletes a table that was not appended.
    virtual ~DbTableDef();

    // Prepares an empty table that the database does not know yet; one that was prepared before is deleted.
    // Always true.
    virtual bool Create(quillet::CString name);
    // Opens the table or query of that name, without one pair of square brackets around it, and reads its
    // rows. A table that was prepared is deleted. False for an unknown name: nothing changes then.
    virtual bool Open(quillet::CString name);
    // Deletes a table that was not appended, and releases any other.
    virtual void Close();

    // The structure; null while closed. It belongs to the database, or to this object before Append.
    virtual DbTableDescr* GetTableDescr();
    // Whether the definition is that of a table of the database: not between Create and Append.
    virtual bool IsOpen();
    // The name as it was opened or created; empty while nothing was.
    virtual const quillet::CString& GetTableName() const;
    // Null once the database is gone.
    virtual DbDatabase* GetDatabase();

    // Adds an index with the name and the fields of the given one. False, as for the next three, where the
    // definition is closed, and as DbTableDescr::CreateIndex says.
    virtual bool CreateIndex(DbTableDescr::DbIndex& index);
    // Appends a field that is no key. False where the name is taken.
    virtual bool CreateField(quillet::CString name, DbFieldDescr::eFieldType type);
    // Removes a field by its position, from 0, or by its name. False where there is none.
    virtual bool DeleteField(int index);
    virtual bool DeleteField(quillet::CString name);

    // Hands the prepared table over to the database. False, with a line in the database's log, where none was
    // prepared or the name is taken; then the prepared table is deleted and the definition closed.
    virtual bool Append();

    // Always true.
    virtual bool CanUpdate();

    // A field by its name or by its position, from 0; null where there is none. It belongs to the structure.
    virtual const DbFieldDescr* GetFieldInfo(quillet::CString name);
    virtual const DbFieldDescr* GetFieldInfo(int index);
    // 0 while closed.
    virtual uint64 GetFieldCount() const;
    // The number of rows. Throws DbException, by pointer, while closed.
    virtual long GetRecordCount() const;

private:
    // A table that only this object owns. The contents are deleted before the structure that they follow.
    struct Prepared {
        std::unique_ptr<DbTableDescr> m_descr;
        std::unique_ptr<DbTableData> m_data;
    };

    void Release();
    void Follow(const quillet::CString& name, const DbTableDescr& descr, const DbTableData& data);
    DbTableDescr* Descr() const { return m_descr ? *m_descr : nullptr; }
    DbTableData* Data() const { return m_data ? *m_data : nullptr; }

    std::weak_ptr<DbDatabase*> m_database;
    quillet::CString m_name;
    std::shared_ptr<DbTableDescr*> m_descr;
    std::shared_ptr<DbTableData*> m_data;
    std::unique_ptr<Prepared> m_prepared;
};
