// The definition of a query.
#pragma once

#include <memory>

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

class DbDatabase;

// Names a query text and checks it against a database, which it does not own. A definition whose database is
// gone is closed.
class QUILLET_API DbQueryDef {
public:
    // Without a text. The database may be null.
    explicit DbQueryDef(DbDatabase* db);
    DbQueryDef(const DbQueryDef& other);
    DbQueryDef& operator=(const DbQueryDef& other);
    virtual ~DbQueryDef();

    // Releases the database and of the text; the name stays.
    virtual void Close();
    virtual const quillet::CString& GetSQL() const;
    // Keeps name and text, and checks the text. Throws DbException, by pointer, where DbDatabase::VerifySQL
    // is false, as it is for a mere table name; the log says why, and name and text are still kept.
    virtual void Create(quillet::CString name, quillet::CString sql);
    // What DbDatabase::VerifySQL says of the text: it is analysed again by every call.
    virtual bool IsOpen();

    // Null after Close, and once the database is gone.
    DbDatabase* GetDatabase();
    const quillet::CString& GetName() const { return m_name; }

private:
    std::weak_ptr<DbDatabase*> m_database;
    quillet::CString m_sql;
    quillet::CString m_name;
};
