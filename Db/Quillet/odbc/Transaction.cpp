#include "Quillet/odbc/Transaction.h"

#include <utility>

#include "Quillet/odbc/Diagnostics.h"

namespace quillet::odbc {
namespace {

SQLRETURN SetAutoCommit(const Handle& connection, SQLULEN value) {
    return SQLSetConnectAttrW(connection.Get(), SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(value),
                              SQL_IS_UINTEGER);
}

}  // namespace

Transaction::Transaction(const Connection& connection) : m_session(connection.Session()) {
    const Handle& handle = *m_session;
    SQLUSMALLINT capable = SQL_TC_NONE;
    m_isOpen =
        SQL_SUCCEEDED(SQLGetInfoW(handle.Get(), SQL_TXN_CAPABLE, &capable, sizeof(capable), nullptr)) &&
        capable != SQL_TC_NONE && SQL_SUCCEEDED(SetAutoCommit(handle, SQL_AUTOCOMMIT_OFF));
}

Transaction::~Transaction() {
    if (m_isOpen) {
        SQLEndTran(SQL_HANDLE_DBC, m_session->Get(), SQL_COMMIT);
        SetAutoCommit(*m_session, SQL_AUTOCOMMIT_ON);
    }
}

void Transaction::Commit() {
    if (!std::exchange(m_isOpen, false)) {
        return;
    }
    const Handle& handle = *m_session;
    if (!SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, handle.Get(), SQL_COMMIT))) {
        const DatabaseError failure = DiagnosticsOf(handle);
        SetAutoCommit(handle, SQL_AUTOCOMMIT_ON);
        throw new DatabaseError(failure);
    }
    SetAutoCommit(handle, SQL_AUTOCOMMIT_ON);
}

}  // namespace quillet::odbc
