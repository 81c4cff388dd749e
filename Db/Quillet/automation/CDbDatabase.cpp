#include "Quillet/automation/CDbDatabase.h"

#include "Quillet/automation/TableKey.h"

namespace quillet::automation {

namespace {

bool FindBy(DbRecordset& cursor, FindMode mode, const CString& where) {
    switch (mode) {
        case First:
            return cursor.FindFirst(where);
        case Next:
            return cursor.FindNext(where);
        case Last:
            return cursor.FindLast(where);
        case Previous:
            return cursor.FindPrev(where);
        default:
            return false;
    }
}

}  // namespace

CDbDatabase::CDbDatabase(IUnknown* outer) : Dispatch(outer), m_database(std::make_unique<DbDatabase>()) {
    m_source->Show(*m_database);
}

HRESULT CDbDatabase::get_TablesCount(long* pVal) {
    return Give(pVal, [&] { return m_database->GetTablesCount(); });
}

HRESULT CDbDatabase::get_Source(IDbSource** pVal) {
    return Give(pVal, [&] { return m_source.Get(); });
}

HRESULT CDbDatabase::TableName(long tableIdx, BSTR* pVal) {
    return Give(pVal, [&]() -> std::optional<CString> {
        if (tableIdx < 0 || tableIdx >= m_database->GetTablesCount()) {
            return std::nullopt;
        }
        return m_database->GetTableName(static_cast<std::size_t>(tableIdx));
    });
}

HRESULT CDbDatabase::TableDescrByIndex(long tableIdx, IDbTableDescr** pVal) {
    return Give(pVal, [&] { return DescrAt(tableIdx); });
}

HRESULT CDbDatabase::TableDataByIndex(long tableIdx, IDbTableData** pVal) {
    return Give(pVal, [&] { return DataAt(tableIdx); });
}

// The log tells whether the file was written.
HRESULT CDbDatabase::Save(BSTR xmlPath) {
    return Do([&] { m_database->Save(TextOf(xmlPath)); });
}

HRESULT CDbDatabase::get_Header(IDbHeader** pVal) {
    return Give(pVal, [&] {
        m_header->Show(m_database->GetTableData(std::size_t{0}));
        return m_header.Get();
    });
}

HRESULT CDbDatabase::get_Properties(IDbProperties** pVal) {
    return Give(pVal, [&] {
        m_properties->Show(m_database->GetTableData(std::size_t{1}));
        return m_properties.Get();
    });
}

HRESULT CDbDatabase::TableDataByName(BSTR TableName, IDbTableData** pVal) {
    return Give(pVal, [&] { return m_data.Of(m_database->GetTableData(TextOf(TableName))); });
}

HRESULT CDbDatabase::TableDescrByName(BSTR TableName, IDbTableDescr** pVal) {
    return Give(pVal, [&] { return m_descrs.Of(m_database->GetTableDescr(TextOf(TableName))); });
}

HRESULT CDbDatabase::TableData(VARIANT table, IDbTableData** pVal) {
    return Give(pVal, [&] {
        const TableKey key(table);
        return key.IsName() ? m_data.Of(m_database->GetTableData(key.Name())) : DataAt(key.Index());
    });
}

HRESULT CDbDatabase::TableDescr(VARIANT table, IDbTableDescr** pVal) {
    return Give(pVal, [&] {
        const TableKey key(table);
        return key.IsName() ? m_descrs.Of(m_database->GetTableDescr(key.Name())) : DescrAt(key.Index());
    });
}

HRESULT CDbDatabase::Query(BSTR sql, BSTR* pVal, VARIANT_BOOL* pRet) {
    return Give(pRet, [&] {
        Require(pVal);
        CString name;
        const bool answered = m_database->Query(TextOf(sql), name);
        if (answered) {
            BSTR const text = NewBStr(name);
            SysFreeString(*pVal);
            *pVal = text;
        }
        return answered;
    });
}

HRESULT CDbDatabase::get_ErrorLog(BSTR* pVal) {
    return Give(pVal, [&] { return m_database->GetErrorLog(); });
}

HRESULT CDbDatabase::TableInfoByName(BSTR TableName, IDbTableInfo** tableInfo) {
    return Give(tableInfo, [&] {
        const DbTableInfo* const info = m_database->GetTableInfo(TextOf(TableName));
        m_info->Show(*m_database, info);
        return info == nullptr ? nullptr : m_info.Get();
    });
}

HRESULT CDbDatabase::Create(BSTR path) {
    return Do([&] { m_database->Create(TextOf(path)); });
}

HRESULT CDbDatabase::CreateTable(BSTR TableName) {
    return Do([&] { m_database->CreateTable(TextOf(TableName), DbTableInfo::Table); });
}

HRESULT CDbDatabase::DeleteTable(BSTR TableName) {
    return Do([&] { m_database->DeleteTable(TextOf(TableName)); });
}

DbRecordset* CDbDatabase::CursorOn(const CString& table) {
    const DbTableData* const data = m_database->GetTableData(table);
    if (data == nullptr) {
        return nullptr;
    }
    if (m_cursor == nullptr || m_cursorData.Get() != data) {
        m_cursorData = {};
        m_cursor = std::make_unique<DbRecordset>(m_database.get());
        if (!m_cursor->OpenTable(table)) {
            m_cursor.reset();
            return nullptr;
        }
        m_cursorData = Watch<DbTableData>(data->LifeToken());
    }
    return m_cursor.get();
}

HRESULT CDbDatabase::Find(FindMode mode, BSTR TableName, BSTR sqlwhere, long* Row) {
    return Give(Row, [&]() -> std::int64_t {
        constexpr std::int64_t NotFound = -1;
        DbRecordset* const cursor = CursorOn(TextOf(TableName));
        const bool found = cursor != nullptr && FindBy(*cursor, mode, TextOf(sqlwhere));
        return found ? cursor->GetAbsolutePosition() : NotFound;
    });
}

}  // namespace quillet::automation
