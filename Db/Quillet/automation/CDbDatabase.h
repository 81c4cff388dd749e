// A catalog database, for automation clients: the object with which they begin.
#pragma once

#include <memory>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Recordset.h"
#include "Quillet/automation/CDbHeader.h"
#include "Quillet/automation/CDbProperties.h"
#include "Quillet/automation/CDbSource.h"
#include "Quillet/automation/CDbTableData.h"
#include "Quillet/automation/CDbTableDescr.h"
#include "Quillet/automation/CDbTableInfo.h"
#include "Quillet/automation/TableWrappers.h"

namespace quillet::automation {

// Owns a database, which begins without a file: a client points its source at one, or creates one. Releasing
// the last reference deletes the database, which saves itself if it was changed. Objects of it that clients
// still hold fail from then on.
class CDbDatabase final : public Dispatch<IDbDatabase> {
public:
    explicit CDbDatabase(IUnknown* outer);

    HRESULT STDMETHODCALLTYPE get_TablesCount(long* pVal) override;
    HRESULT STDMETHODCALLTYPE get_Source(IDbSource** pVal) override;
    HRESULT STDMETHODCALLTYPE TableName(long tableIdx, BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE TableDescrByIndex(long tableIdx, IDbTableDescr** pVal) override;
    HRESULT STDMETHODCALLTYPE TableDataByIndex(long tableIdx, IDbTableData** pVal) override;
    HRESULT STDMETHODCALLTYPE Save(BSTR xmlPath) override;
    HRESULT STDMETHODCALLTYPE get_Header(IDbHeader** pVal) override;
    HRESULT STDMETHODCALLTYPE get_Properties(IDbProperties** pVal) override;
    HRESULT STDMETHODCALLTYPE TableDataByName(BSTR TableName, IDbTableData** pVal) override;
    HRESULT STDMETHODCALLTYPE TableDescrByName(BSTR TableName, IDbTableDescr** pVal) override;
    HRESULT STDMETHODCALLTYPE TableData(VARIANT table, IDbTableData** pVal) override;
    HRESULT STDMETHODCALLTYPE TableDescr(VARIANT table, IDbTableDescr** pVal) override;
    // The name stays unchanged if the query fails.
    HRESULT STDMETHODCALLTYPE Query(BSTR sql, BSTR* pVal, VARIANT_BOOL* pRet) override;
    HRESULT STDMETHODCALLTYPE get_ErrorLog(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE TableInfoByName(BSTR TableName, IDbTableInfo** tableInfo) override;
    HRESULT STDMETHODCALLTYPE Create(BSTR path) override;
    HRESULT STDMETHODCALLTYPE CreateTable(BSTR TableName) override;
    HRESULT STDMETHODCALLTYPE DeleteTable(BSTR TableName) override;
    HRESULT STDMETHODCALLTYPE Find(FindMode mode, BSTR TableName, BSTR sqlwhere, long* Row) override;

private:
    // Both are null if there is no such table.
    CDbTableDescr* DescrAt(std::int64_t index) {
        return m_descrs.Of(m_database->GetTableDescr(static_cast<std::size_t>(index)));
    }
    CDbTableData* DataAt(std::int64_t index) {
        return m_data.Of(m_database->GetTableData(static_cast<std::size_t>(index)));
    }
    // The cursor on that table, which is kept as long as it is the same one; null if there is no such table.
    DbRecordset* CursorOn(const CString& table);

    const std::unique_ptr<DbDatabase> m_database;
    CComPtr<CDbSource> m_source{new CDbSource(nullptr)};
    CComPtr<CDbHeader> m_header{new CDbHeader(nullptr)};
    CComPtr<CDbProperties> m_properties{new CDbProperties(nullptr)};
    CComPtr<CDbTableInfo> m_info{new CDbTableInfo(nullptr)};
    TableWrappers<DbTableDescr, CDbTableDescr> m_descrs;
    TableWrappers<DbTableData, CDbTableData> m_data;
    std::unique_ptr<DbRecordset> m_cursor;
    Watch<DbTableData> m_cursorData;
};

}  // namespace quillet::automation
