#include "Quillet/odbc/Connection.h"

#include <string>

#include "Quillet/odbc/Diagnostics.h"
#include "Quillet/odbc/Handle.h"
#include "Quillet/platform/DriverManager.h"

namespace quillet::odbc {
namespace {

// Its length is passed as a short.
constexpr std::size_t LongestConnectString = 32767;

void Set(const Handle& connection, SQLINTEGER attribute, SQLULEN value) {
    Check(SQLSetConnectAttrW(connection.Get(), attribute, NumberAttribute(value), SQL_IS_UINTEGER),
          connection);
}

bool HasFunction(const Handle& connection, SQLUSMALLINT function) {
    SQLUSMALLINT has = SQL_FALSE;
    return SQL_SUCCEEDED(SQLGetFunctions(connection.Get(), function, &has)) && has == SQL_TRUE;
}

}  // namespace

// A separate environment, and the connection in it.
struct Connection::Handles {
    Handle m_environment;
    Handle m_connection;
    bool m_connected = false;

    Handles(const std::string& connectString, unsigned long options)
        : m_environment(SQL_HANDLE_ENV, Handle()) {
        Check(SQLSetEnvAttr(m_environment.Get(), SQL_ATTR_ODBC_VERSION, NumberAttribute(SQL_OV_ODBC3), 0),
              m_environment);
        m_connection = Handle(SQL_HANDLE_DBC, m_environment);
        if ((options & ReadOnly) != 0) {
            Set(m_connection, SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY);
        }
        if ((options & UseCursorLibrary) != 0) {
            Set(m_connection, SQL_ATTR_ODBC_CURSORS, SQL_CUR_USE_ODBC);
        }
        // We have no window that could own a dialog.
        const SQLUSMALLINT completion = (options & NoDialog) != 0 ? SQL_DRIVER_NOPROMPT : SQL_DRIVER_COMPLETE;
        Check(platform::ConnectDriver(m_connection.Get(), connectString, completion), m_connection);
        m_connected = true;
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    // A connection is freed before its environment.
    ~Handles() {
        if (m_connected) {
            SQLDisconnect(m_connection.Get());
        }
    }
};

Connection::Connection() = default;
Connection::~Connection() = default;

void Connection::Open(const CString& connectString, unsigned long options) {
    Close();
    std::string text = connectString.ToUtf8();
    if ((options & Exclusive) != 0) {
        text += ";Exclusive=1";
    }
    if (text.size() > LongestConnectString) {
        throw new DatabaseError("HY090", "The connect string is too long.");
    }
    platform::WithConnectionLocale(
        [this, &text, options] { m_handles = std::make_shared<Handles>(text, options); });
    m_readOnly = (options & ReadOnly) != 0;
    AskTheDriver(m_handles->m_connection);
}

void Connection::Close() {
    m_handles.reset();
}

bool Connection::IsOpen() const {
    return m_handles != nullptr;
}

void Connection::ExecuteSql(const CString& statement) {
    CheckWritable();
    const Handle handle(SQL_HANDLE_STMT, *Session());
    WideString text(statement.View());
    const SQLRETURN result = SQLExecDirectW(handle.Get(), text.data(), static_cast<SQLINTEGER>(text.size()));
    // A statement that had no row to change has succeeded.
    if (result != SQL_NO_DATA) {
        Check(result, handle);
    }
}

std::shared_ptr<const Handle> Connection::Session() const {
    if (!IsOpen()) {
        throw new DatabaseError("08003", "The connection to the database is not open.");
    }
    return {m_handles, &m_handles->m_connection};
}

void Connection::CheckWritable() const {
    Session();
    if (m_readOnly) {
        throw new DatabaseError("25000", "The connection to the database was opened to be read only.");
    }
}

void Connection::AskTheDriver(const Handle& connection) {
    m_canBindColumns =
        HasFunction(connection, SQL_API_SQLFETCHSCROLL) && HasFunction(connection, SQL_API_SQLBINDCOL);
    m_canWriteAtPosition = HasFunction(connection, SQL_API_SQLSETPOS);
    SQLUINTEGER extensions = 0;
    m_canGetAnyColumn = SQL_SUCCEEDED(SQLGetInfoW(connection.Get(), SQL_GETDATA_EXTENSIONS, &extensions,
                                                  sizeof(extensions), nullptr)) &&
                        (extensions & SQL_GD_ANY_COLUMN) != 0;
    SQLWCHAR isReadOnly[2] = {};
    m_canWrite = SQL_SUCCEEDED(SQLGetInfoW(connection.Get(), SQL_DATA_SOURCE_READ_ONLY, isReadOnly,
                                           sizeof(isReadOnly), nullptr)) &&
                 isReadOnly[0] == 'N';
}

}  // namespace quillet::odbc
