#include "Quillet/Db_QueryDef.h"

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"

using quillet::CString;

namespace {

// What a report names: the same in every version, so that it can be searched for.
constexpr int InvalidQueryLine = 55;

}  // namespace

DbQueryDef::DbQueryDef(DbDatabase* db) {
    if (db != nullptr) {
        m_database = db->LifeToken();
    }
}

DbQueryDef::DbQueryDef(const DbQueryDef& other) = default;

DbQueryDef& DbQueryDef::operator=(const DbQueryDef& other) = default;

DbQueryDef::~DbQueryDef() = default;

void DbQueryDef::Close() {
    m_database.reset();
    m_sql.Empty();
}

const CString& DbQueryDef::GetSQL() const {
    return m_sql;
}

void DbQueryDef::Create(CString name, CString sql) {
    m_name = name;
    m_sql = sql;
    DbDatabase* const database = GetDatabase();
    if (database == nullptr || !database->VerifySQL(m_sql)) {
        CString message;
        message.Format("Invalid '%s' query", m_sql.ToUtf8().c_str());
        throw new DbException("Db/Quillet/Db_QueryDef", InvalidQueryLine, message);
    }
}

bool DbQueryDef::IsOpen() {
    DbDatabase* const database = GetDatabase();
    return database != nullptr && database->VerifySQL(m_sql);
}

DbDatabase* DbQueryDef::GetDatabase() {
    const std::shared_ptr<DbDatabase*> database = m_database.lock();
    return database ? *database : nullptr;
}
