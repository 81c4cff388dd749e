// A cursor whose row buffer is a record.
#pragma once

#include "Quillet/dbaccess/DBACCESS_RECORD.h"
#include "Quillet/odbc/Cursor.h"

// Each column of the record is bound by its code: 1 a boolean, 3 an integer of 16 bits, 4 a long, 6 and 7
// reals, 9 bytes up to as many as the column holds when the cursor opens, 10 a text of up to 255 code units.
// Columns of other codes are not bound.
class QUILLET_API DBACCESS_RECORDSET : public quillet::odbc::Cursor, public DBACCESS_RECORD {
public:
    static const quillet::CRuntimeClass classDBACCESS_RECORDSET;

    // The row buffer becomes a copy of the record.
    DBACCESS_RECORDSET(std::shared_ptr<quillet::odbc::Connection> connection, DBACCESS_RECORD record);
    ~DBACCESS_RECORDSET() override;

    const quillet::CRuntimeClass* GetRuntimeClass() const override;

    void DoFieldExchange(quillet::odbc::FieldExchange* exchange) override;
};
