// A driver for a table in memory that can do what drivers for files can't: keyset cursors with positioned
// deletion, and columns in any order. Connect strings choose its capabilities and the contents of the table:
//
//   Database     the name under which connections share the table
//   Table        its name
//   Columns      "<name> integer", "<name> longtext" and "<name> text <characters>", with ',' between them
//   Rows         with '/' between them, and '|' between their values; NULL for a NULL
//   GetData      which of AnyColumn, AnyOrder and Bound SQLGetData allows; nothing without
//   Cursor       keyset, static or forward: the strongest type; a keyset without
//   Concurrency  lock: cursors that write are said to lock rows, and without, to compare versions of them
//   Writes       no: a database that can only be read
//   Without      SQLFetchScroll, SQLSetPos: calls that it does not have
//
// It runs SELECT * and DELETE of all rows, and INSERT of one with parameters. "SELECT calls" gives the calls
// that it has got about the table. Everything else fails as not supported.
#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

#include "Objects.h"

using memory_driver::Column;
using memory_driver::Connection;
using memory_driver::Environment;
using memory_driver::Failure;
using memory_driver::Object;
using memory_driver::Statement;

namespace {

// Calls what does the work, which may return a result; a failure stays with the object.
template <typename Kind, typename Work>
SQLRETURN Do(SQLHANDLE handle, const Work& work) {
    if (handle == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    auto& object = *static_cast<Kind*>(handle);
    object.m_failure.reset();
    try {
        if constexpr (std::is_void_v<decltype(work(object))>) {
            work(object);
            return SQL_SUCCESS;
        } else {
            return work(object);
        }
    } catch (const Failure& failure) {
        object.m_failure = failure;
    } catch (const std::bad_alloc&) {
        object.m_failure = Failure{"HY001", "out of memory"};
    }
    return SQL_ERROR;
}

std::string TextOf(const SQLCHAR* text, SQLINTEGER length) {
    const auto* bytes = reinterpret_cast<const char*>(text);
    return length == SQL_NTS ? std::string(bytes) : std::string(bytes, static_cast<std::size_t>(length));
}

// Writes as much of a text as there is room for.
SQLRETURN Give(Object& object, const std::string& text, void* buffer, SQLSMALLINT room, SQLSMALLINT* length) {
    if (length != nullptr) {
        *length = static_cast<SQLSMALLINT>(text.size());
    }
    if (buffer == nullptr || room <= 0) {
        return SQL_SUCCESS;
    }
    const std::size_t given = std::min(text.size(), static_cast<std::size_t>(room) - 1);
    std::memcpy(buffer, text.data(), given);
    static_cast<char*>(buffer)[given] = '\0';
    return given == text.size() ? SQL_SUCCESS : object.Warn("01004", "a text is cut");
}

template <typename Number>
SQLRETURN GiveNumber(Number number, void* buffer, SQLSMALLINT* length) {
    std::memcpy(buffer, &number, sizeof(number));
    if (length != nullptr) {
        *length = sizeof(number);
    }
    return SQL_SUCCESS;
}

Object* ObjectOf(SQLSMALLINT type, SQLHANDLE handle) {
    switch (type) {
        case SQL_HANDLE_ENV:
            return static_cast<Environment*>(handle);
        case SQL_HANDLE_DBC:
            return static_cast<Connection*>(handle);
        case SQL_HANDLE_STMT:
            return static_cast<Statement*>(handle);
        default:
            return nullptr;
    }
}

SQLSMALLINT SqlTypeOf(Column::Type type) {
    switch (type) {
        case Column::Type::Integer:
            return SQL_INTEGER;
        case Column::Type::LongText:
            return SQL_LONGVARCHAR;
        default:
            return SQL_VARCHAR;
    }
}

const char* TypeNameOf(Column::Type type) {
    switch (type) {
        case Column::Type::Integer:
            return "integer";
        case Column::Type::LongText:
            return "longtext";
        default:
            return "text";
    }
}

}  // namespace

extern "C" {

// ---- Handles

SQLRETURN SQL_API SQLAllocHandle(SQLSMALLINT type, SQLHANDLE parent, SQLHANDLE* handle) {
    switch (type) {
        case SQL_HANDLE_ENV:
            *handle = new (std::nothrow) Environment;
            break;
        case SQL_HANDLE_DBC:
            *handle = new (std::nothrow) Connection;
            break;
        case SQL_HANDLE_STMT:
            *handle = new (std::nothrow) Statement(*static_cast<Connection*>(parent));
            break;
        default:
            *handle = nullptr;
    }
    return *handle == nullptr ? SQL_ERROR : SQL_SUCCESS;
}

SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT type, SQLHANDLE handle) {
    switch (type) {
        case SQL_HANDLE_ENV:
            delete static_cast<Environment*>(handle);
            return SQL_SUCCESS;
        case SQL_HANDLE_DBC:
            delete static_cast<Connection*>(handle);
            return SQL_SUCCESS;
        case SQL_HANDLE_STMT:
            delete static_cast<Statement*>(handle);
            return SQL_SUCCESS;
        default:
            return SQL_INVALID_HANDLE;
    }
}

SQLRETURN SQL_API SQLGetDiagRec(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record, SQLCHAR* state,
                                SQLINTEGER* native, SQLCHAR* text, SQLSMALLINT room, SQLSMALLINT* length) {
    const Object* const object = handle == nullptr ? nullptr : ObjectOf(type, handle);
    if (object == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    if (record != 1 || !object->m_failure.has_value()) {
        return SQL_NO_DATA;
    }
    if (state != nullptr) {
        std::memcpy(state, object->m_failure->m_state.c_str(), SQL_SQLSTATE_SIZE + 1);
    }
    if (native != nullptr) {
        *native = 0;
    }
    Object ignored;
    return Give(ignored, "[memory]" + object->m_failure->m_text, text, room, length);
}

// The driver manager takes no driver's word without it.
SQLRETURN SQL_API SQLGetDiagField(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record, SQLSMALLINT field,
                                  SQLPOINTER value, SQLSMALLINT, SQLSMALLINT*) {
    const Object* const object = handle == nullptr ? nullptr : ObjectOf(type, handle);
    if (object == nullptr) {
        return SQL_INVALID_HANDLE;
    }
    if (record != 0 || field != SQL_DIAG_NUMBER) {
        return SQL_ERROR;
    }
    return GiveNumber<SQLINTEGER>(object->m_failure.has_value() ? 1 : 0, value, nullptr);
}

SQLRETURN SQL_API SQLSetEnvAttr(SQLHENV environment, SQLINTEGER attribute, SQLPOINTER, SQLINTEGER) {
    return Do<Environment>(environment, [=](Environment&) {
        if (attribute != SQL_ATTR_ODBC_VERSION) {
            throw Failure{"HYC00", "unknown attribute of an environment"};
        }
    });
}

// ---- Connections

SQLRETURN SQL_API SQLDriverConnect(SQLHDBC connection, SQLHWND, SQLCHAR* text, SQLSMALLINT length,
                                   SQLCHAR* completed, SQLSMALLINT room, SQLSMALLINT* completedLength,
                                   SQLUSMALLINT) {
    return Do<Connection>(connection, [=](Connection& object) {
        const std::string connectString = TextOf(text, length);
        object.Connect(connectString);
        return Give(object, connectString, completed, room, completedLength);
    });
}

SQLRETURN SQL_API SQLDisconnect(SQLHDBC connection) {
    return Do<Connection>(connection, [](Connection& object) { object.m_database.reset(); });
}

SQLRETURN SQL_API SQLSetConnectAttr(SQLHDBC connection, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Do<Connection>(connection, [=](Connection&) {
        const bool isDefault =
            attribute == SQL_ATTR_AUTOCOMMIT && reinterpret_cast<SQLULEN>(value) == SQL_AUTOCOMMIT_ON;
        if (!isDefault && attribute != SQL_ATTR_ACCESS_MODE) {
            throw Failure{"HYC00", "unknown attribute of a connection"};
        }
    });
}

SQLRETURN SQL_API SQLGetInfo(SQLHDBC connection, SQLUSMALLINT type, SQLPOINTER value, SQLSMALLINT room,
                             SQLSMALLINT* length) {
    return Do<Connection>(connection, [=](Connection& object) -> SQLRETURN {
        switch (type) {
            case SQL_DRIVER_ODBC_VER:
                return Give(object, "03.00", value, room, length);
            case SQL_DATA_SOURCE_READ_ONLY:
                return Give(object, object.IsReadOnly() ? "Y" : "N", value, room, length);
            case SQL_GETDATA_EXTENSIONS:
                return GiveNumber(object.GetDataExtensions(), value, length);
            case SQL_TXN_CAPABLE:
                return GiveNumber<SQLUSMALLINT>(SQL_TC_NONE, value, length);
            case SQL_CURSOR_COMMIT_BEHAVIOR:
            case SQL_CURSOR_ROLLBACK_BEHAVIOR:
                return GiveNumber<SQLUSMALLINT>(SQL_CB_PRESERVE, value, length);
            default:
                throw Failure{"HYC00", "unknown information"};
        }
    });
}

SQLRETURN SQL_API SQLGetFunctions(SQLHDBC connection, SQLUSMALLINT function, SQLUSMALLINT* has) {
    return Do<Connection>(connection, [=](Connection& object) {
        if (function == SQL_API_ALL_FUNCTIONS || function == SQL_API_ODBC3_ALL_FUNCTIONS) {
            throw Failure{"HYC00", "functions can only be asked for one by one"};
        }
        *has = object.Has(function) ? SQL_TRUE : SQL_FALSE;
    });
}

// ---- Statements

SQLRETURN SQL_API SQLSetStmtAttr(SQLHSTMT statement, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
    return Do<Statement>(statement, [=](Statement& object) { return object.SetAttribute(attribute, value); });
}

SQLRETURN SQL_API SQLGetStmtAttr(SQLHSTMT statement, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER,
                                 SQLINTEGER*) {
    return Do<Statement>(statement, [=](Statement& object) {
        return GiveNumber(object.Attribute(attribute), value, nullptr);
    });
}

SQLRETURN SQL_API SQLPrepare(SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
    return Do<Statement>(statement, [=](Statement& object) { object.Prepare(TextOf(text, length)); });
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT statement) {
    return Do<Statement>(statement, [](Statement& object) { return object.Execute(); });
}

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
    return Do<Statement>(statement, [=](Statement& object) {
        object.Prepare(TextOf(text, length));
        return object.Execute();
    });
}

SQLRETURN SQL_API SQLBindParameter(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT kind,
                                   SQLSMALLINT cType, SQLSMALLINT, SQLULEN, SQLSMALLINT, SQLPOINTER value,
                                   SQLLEN, SQLLEN* length) {
    return Do<Statement>(statement, [=](Statement& object) {
        if (number < 1 || kind != SQL_PARAM_INPUT) {
            throw Failure{"HYC00", "parameters only go in"};
        }
        object.BindParameter(number, cType, value, length);
    });
}

SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT statement, SQLUSMALLINT option) {
    return Do<Statement>(statement, [=](Statement& object) {
        switch (option) {
            case SQL_CLOSE:
                object.CloseCursor();
                break;
            case SQL_UNBIND:
                object.Unbind();
                break;
            case SQL_RESET_PARAMS:
                object.ResetParameters();
                break;
            default:
                throw Failure{"HYC00", "unknown option"};
        }
    });
}

// ---- Columns and rows

SQLRETURN SQL_API SQLNumResultCols(SQLHSTMT statement, SQLSMALLINT* count) {
    return Do<Statement>(
        statement, [=](Statement& object) { *count = static_cast<SQLSMALLINT>(object.Columns().size()); });
}

SQLRETURN SQL_API SQLDescribeCol(SQLHSTMT statement, SQLUSMALLINT column, SQLCHAR* name, SQLSMALLINT room,
                                 SQLSMALLINT* length, SQLSMALLINT* type, SQLULEN* size, SQLSMALLINT* digits,
                                 SQLSMALLINT* nullable) {
    return Do<Statement>(statement, [=](Statement& object) {
        const Column& described = object.At(column);
        const auto give = [](auto* place, auto value) {
            if (place != nullptr) {
                *place = static_cast<std::remove_reference_t<decltype(*place)>>(value);
            }
        };
        give(type, SqlTypeOf(described.m_type));
        give(size, described.m_size);
        give(digits, 0);
        give(nullable, SQL_NULLABLE);
        return Give(object, described.m_name, name, room, length);
    });
}

SQLRETURN SQL_API SQLColAttribute(SQLHSTMT statement, SQLUSMALLINT column, SQLUSMALLINT attribute,
                                  SQLPOINTER text, SQLSMALLINT room, SQLSMALLINT* length, SQLLEN*) {
    return Do<Statement>(statement, [=](Statement& object) {
        if (attribute != SQL_DESC_TYPE_NAME) {
            throw Failure{"HYC00", "unknown attribute of a column"};
        }
        return Give(object, TypeNameOf(object.At(column).m_type), text, room, length);
    });
}

SQLRETURN SQL_API SQLBindCol(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer,
                             SQLLEN room, SQLLEN* length) {
    return Do<Statement>(
        statement, [=](Statement& object) { return object.BindColumn(column, cType, buffer, room, length); });
}

SQLRETURN SQL_API SQLFetch(SQLHSTMT statement) {
    return Do<Statement>(statement, [](Statement& object) { return object.Fetch(SQL_FETCH_NEXT); });
}

SQLRETURN SQL_API SQLFetchScroll(SQLHSTMT statement, SQLSMALLINT orientation, SQLLEN) {
    return Do<Statement>(statement, [=](Statement& object) { return object.Fetch(orientation); });
}

SQLRETURN SQL_API SQLGetData(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer,
                             SQLLEN room, SQLLEN* length) {
    return Do<Statement>(
        statement, [=](Statement& object) { return object.GetData(column, cType, buffer, room, length); });
}

SQLRETURN SQL_API SQLSetPos(SQLHSTMT statement, SQLSETPOSIROW row, SQLUSMALLINT operation, SQLUSMALLINT) {
    return Do<Statement>(statement, [=](Statement& object) { return object.SetPosition(row, operation); });
}

}  // extern "C"
