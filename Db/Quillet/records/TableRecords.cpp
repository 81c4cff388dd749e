#include "Quillet/records/TableRecords.h"

#include <cstring>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableInfo.h"
#include "Quillet/dbaccess/DBACCESS_VECTOR.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/values/Base64.h"

namespace quillet {

namespace {

// The number fills half of the 32 bits that are read.
std::int32_t StoredShort(const CComVariant& value) {
    std::int32_t number = 0;
    std::memcpy(&number, &value.lVal, sizeof number);
    return number;
}

void SetColumn(const CComVariant& value, DBACCESS_COLUMN& column) {
    switch (value.vt) {
        case VT_I2:
            column.m_type = DBACCESS_COLUMN::Integer;
            column.m_int = StoredShort(value);
            break;
        case VT_I4:
            column = static_cast<long>(value.lVal);
            break;
        case VT_R4:
            column = value.fltVal;
            break;
        case VT_R8:
            column = value.dblVal;
            break;
        case VT_BSTR:
            column = CString(value.Text());
            break;
        case VT_BOOL:
            column = value.boolVal == VARIANT_TRUE;
            break;
        case VT_ARRAY | VT_UI1: {
            const std::vector<BYTE> bytes = BytesOf(value);
            column = CByteArray(bytes.data(), bytes.size());
            break;
        }
        default:
            break;
    }
}

void SetMalformed(DBACCESS_RECORD& record) {
    for (DBACCESS_COLUMN& column : record) {
        column.m_type = DBACCESS_COLUMN::Integer;
        column.m_int = -1;
    }
}

}  // namespace

void CopyRecords(const DbTableInfo& table, DBACCESS_VECTOR& out) {
    const DbTableDescr& descr = *table.GetDescr();
    DbTableData& data = *table.GetData();
    out.clear();
    out.resize(data.size());
    if (out.empty()) {
        return;
    }
    const RowsView rows(*data.GetRows());
    CComVariant scratch;
    for (std::size_t i = 0; i < out.size(); ++i) {
        DBACCESS_RECORD& record = out[i];
        record.resize(descr.size());
        if (!rows.HasRow(i) || rows.Width(i) != descr.size()) {
            SetMalformed(record);
            continue;
        }
        for (std::size_t field = 0; field < descr.size(); ++field) {
            DBACCESS_COLUMN& column = record[field];
            column.m_name = descr.at(field)->GetName();
            SetColumn(rows.Cell(i, field).In(scratch), column);
        }
    }
}

}  // namespace quillet
