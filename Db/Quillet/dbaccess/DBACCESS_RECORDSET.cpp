#include "Quillet/dbaccess/DBACCESS_RECORDSET.h"

#include <cstddef>
#include <utility>

using quillet::CRuntimeClass;

namespace {

constexpr int MaximumTextLength = 255;

}  // namespace

const CRuntimeClass DBACCESS_RECORDSET::classDBACCESS_RECORDSET{"DBACCESS_RECORDSET",
                                                                &quillet::odbc::Cursor::classCursor};

DBACCESS_RECORDSET::DBACCESS_RECORDSET(std::shared_ptr<quillet::odbc::Connection> connection,
                                       DBACCESS_RECORD record)
    : quillet::odbc::Cursor(std::move(connection)), DBACCESS_RECORD(std::move(record)) {
}

DBACCESS_RECORDSET::~DBACCESS_RECORDSET() = default;

const CRuntimeClass* DBACCESS_RECORDSET::GetRuntimeClass() const {
    return &classDBACCESS_RECORDSET;
}

void DBACCESS_RECORDSET::DoFieldExchange(quillet::odbc::FieldExchange* exchange) {
    const int count = static_cast<int>(size());
    for (int position = 0; position < count; ++position) {
        DBACCESS_COLUMN& column = (*this)[position];
        switch (column.m_type) {
            case DBACCESS_COLUMN::Boolean:
                exchange->Boolean(position, column.m_name, column.m_bool);
                break;
            case DBACCESS_COLUMN::Integer:
                exchange->Integer(position, column.m_name, column.m_int);
                break;
            case DBACCESS_COLUMN::Long:
                exchange->Long(position, column.m_name, column.m_long);
                break;
            case DBACCESS_COLUMN::Float:
                exchange->Single(position, column.m_name, column.m_float);
                break;
            case DBACCESS_COLUMN::Double:
                exchange->Double(position, column.m_name, column.m_double);
                break;
            case DBACCESS_COLUMN::Binary:
                exchange->Binary(position, column.m_name, column.m_binary, column.m_binary.GetSize());
                break;
            case DBACCESS_COLUMN::Text:
                exchange->Text(position, column.m_name, column.m_text, MaximumTextLength);
                break;
            default:
                break;
        }
    }
}
