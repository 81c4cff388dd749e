#include "Quillet/dbaccess/VorqOdbcRecordset.h"

#include <utility>

using quillet::CRuntimeClass;
using quillet::CString;

const CRuntimeClass VorqOdbcRecordset::classVorqOdbcRecordset{"VorqOdbcRecordset",
                                                              &DBACCESS_RECORDSET::classDBACCESS_RECORDSET};

VorqOdbcRecordset::VorqOdbcRecordset(std::shared_ptr<quillet::odbc::Connection> connection,
                                     const CString& table, DBACCESS_RECORD record)
    : DBACCESS_RECORDSET(std::move(connection), std::move(record)), m_table(table) {
}

VorqOdbcRecordset::~VorqOdbcRecordset() = default;

const CRuntimeClass* VorqOdbcRecordset::GetRuntimeClass() const {
    return &classVorqOdbcRecordset;
}

CString VorqOdbcRecordset::GetDefaultSQL() {
    return CString("SELECT * FROM ") + GetTableName();
}

CString VorqOdbcRecordset::GetTableName() const {
    return CString("[") + m_table + "]";
}
