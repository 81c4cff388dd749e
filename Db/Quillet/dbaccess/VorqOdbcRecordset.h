// A cursor over a named table, whose row buffer is a record.
#pragma once

#include "Quillet/dbaccess/DBACCESS_RECORDSET.h"

class QUILLET_API VorqOdbcRecordset : public DBACCESS_RECORDSET {
public:
    static const quillet::CRuntimeClass classVorqOdbcRecordset;

    VorqOdbcRecordset(std::shared_ptr<quillet::odbc::Connection> connection, const quillet::CString& table,
                      DBACCESS_RECORD record);
    ~VorqOdbcRecordset() override;

    const quillet::CRuntimeClass* GetRuntimeClass() const override;

    // "SELECT * FROM [<table>]"
    quillet::CString GetDefaultSQL() override;

protected:
    quillet::CString GetTableName() const override;

private:
    quillet::CString m_table;
};
