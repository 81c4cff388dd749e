#include "Quillet/Db_TableDef.h"

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/registry/Upcalls.h"
#include "Quillet/values/Names.h"

using quillet::CString;

namespace {

// What a report names: the same in every version, so that it can be searched for.
constexpr int NotOpenLine = 178;

}  // namespace

DbTableDef::DbTableDef(DbDatabase* db) {
    if (db != nullptr) {
        m_database = db->LifeToken();
    }
}

DbTableDef::DbTableDef(const DbTableDef& other) {
    *this = other;
}

DbTableDef& DbTableDef::operator=(const DbTableDef& other) {
    if (this == &other) {
        return *this;
    }
    Release();
    m_database = other.m_database;
    if (other.m_prepared == nullptr) {
        m_name = other.m_name;
        m_descr = other.m_descr;
        m_data = other.m_data;
    }
    return *this;
}

DbTableDef::~DbTableDef() = default;

bool DbTableDef::Create(CString name) {
    DbDatabase* const database = GetDatabase();
    auto prepared = std::make_unique<Prepared>();
    prepared->m_descr = std::make_unique<DbTableDescr>(database);
    prepared->m_data = std::make_unique<DbTableData>(database, prepared->m_descr.get());
    Follow(name, *prepared->m_descr, *prepared->m_data);
    m_prepared = std::move(prepared);
    return true;
}

bool DbTableDef::Open(CString name) {
    DbDatabase* const database = GetDatabase();
    name = quillet::WithoutBrackets(name);
    const DbTableDescr* const descr = database == nullptr ? nullptr : database->GetTableDescr(name);
    if (descr == nullptr) {
        return false;
    }
    Follow(name, *descr, *database->GetTableData(name));
    return true;
}

void DbTableDef::Close() {
    Release();
}

DbTableDescr* DbTableDef::GetTableDescr() {
    return Descr();
}

bool DbTableDef::IsOpen() {
    return m_prepared == nullptr && Descr() != nullptr;
}

const CString& DbTableDef::GetTableName() const {
    return m_name;
}

DbDatabase* DbTableDef::GetDatabase() {
    const std::shared_ptr<DbDatabase*> database = m_database.lock();
    return database ? *database : nullptr;
}

bool DbTableDef::CreateIndex(DbTableDescr::DbIndex& index) {
    return Descr() != nullptr && Descr()->CreateIndex(index.GetName(), index.GetFieldNames());
}

bool DbTableDef::CreateField(CString name, DbFieldDescr::eFieldType type) {
    return Descr() != nullptr && Descr()->CreateField(name, false, type);
}

bool DbTableDef::DeleteField(int index) {
    return Descr() != nullptr && Descr()->DeleteField(index);
}

bool DbTableDef::DeleteField(CString name) {
    return Descr() != nullptr && Descr()->DeleteField(name);
}

bool DbTableDef::Append() {
    DbDatabase* const database = GetDatabase();
    if (m_prepared == nullptr) {
        quillet::Upcalls::Log(database, {DbLogEntry::Kind::Refused,
                                         "Cannot append database... call DbTableDef::Create(...) first"});
        return false;
    }
    DbTableInfo info(m_name, DbTableInfo::Table, 0, "", m_prepared->m_descr.get(), m_prepared->m_data.get(),
                     nullptr);
    if (database == nullptr || database->CreateTable(&info) == nullptr) {
        Release();
        return false;
    }
    static_cast<void>(m_prepared->m_descr.release());
    static_cast<void>(m_prepared->m_data.release());
    m_prepared.reset();
    return true;
}

bool DbTableDef::CanUpdate() {
    return true;
}

const DbFieldDescr* DbTableDef::GetFieldInfo(CString name) {
    return Descr() == nullptr ? nullptr : GetFieldInfo(Descr()->GetFieldIndex(name));
}

const DbFieldDescr* DbTableDef::GetFieldInfo(int index) {
    return Descr() != nullptr && index >= 0 && static_cast<uint64>(index) < Descr()->size()
               ? &Descr()->GetField(index)
               : nullptr;
}

uint64 DbTableDef::GetFieldCount() const {
    return Descr() == nullptr ? 0 : Descr()->size();
}

long DbTableDef::GetRecordCount() const {
    if (Data() == nullptr) {
        throw new DbException("Db/Quillet/Db_TableDef", NotOpenLine,
                              "Did you forgot to call DbTableDef::Open() first ?");
    }
    return static_cast<long>(Data()->size());
}

void DbTableDef::Release() {
    m_name.Empty();
    m_descr.reset();
    m_data.reset();
    m_prepared.reset();
}

void DbTableDef::Follow(const CString& name, const DbTableDescr& descr, const DbTableData& data) {
    m_name = name;
    m_descr = descr.LifeToken();
    m_data = data.LifeToken();
    m_prepared.reset();
}
