#include "Quillet/dbaccess/CTables.h"

#include <utility>

#include "Quillet/odbc/Diagnostics.h"

using quillet::CRuntimeClass;
using quillet::CString;
using quillet::WideString;

namespace {

constexpr int MaximumLength = 255;

// A filter as the catalog call takes it: null-terminated, or a null pointer if it is empty.
SQLWCHAR* Argument(WideString& filter) {
    return filter.empty() ? nullptr : filter.data();
}

}  // namespace

const CRuntimeClass CTables::classCTables{"CTables", &quillet::odbc::Cursor::classCursor};

CTables::CTables(std::shared_ptr<quillet::odbc::Connection> connection)
    : quillet::odbc::Cursor(std::move(connection)) {
}

CTables::~CTables() = default;

const CRuntimeClass* CTables::GetRuntimeClass() const {
    return &classCTables;
}

bool CTables::Open(unsigned int, const WCHAR*, unsigned int options) {
    const quillet::odbc::Handle* statement = OpenStatement(options | ReadOnly);
    if (statement == nullptr) {
        return false;
    }
    WideString qualifier(m_qualifierFilter.View());
    WideString owner(m_ownerFilter.View());
    WideString name(m_nameFilter.View());
    WideString type(m_typeFilter.View());
    SQLRETURN result = SQL_STILL_EXECUTING;
    while (result == SQL_STILL_EXECUTING) {
        result = SQLTablesW(statement->Get(), Argument(qualifier), SQL_NTS, Argument(owner), SQL_NTS,
                            Argument(name), SQL_NTS, Argument(type), SQL_NTS);
    }
    quillet::odbc::Check(result, *statement);
    OpenRows();
    return true;
}

bool CTables::TakesRow() const {
    return m_typeFilter.IsEmpty() || m_typeFilter.Find(CString("'") + m_type + "'") >= 0;
}

CString CTables::GetDefaultConnect() {
    return "ODBC;";
}

CString CTables::GetDefaultSQL() {
    return "!";
}

void CTables::DoFieldExchange(quillet::odbc::FieldExchange* exchange) {
    exchange->Text(0, "table_qualifier", m_qualifier, MaximumLength);
    exchange->Text(1, "table_owner", m_owner, MaximumLength);
    exchange->Text(2, "table_name", m_name, MaximumLength);
    exchange->Text(3, "table_type", m_type, MaximumLength);
    exchange->Text(4, "remarks", m_remarks, MaximumLength);
}
