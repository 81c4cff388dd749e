#include "Quillet/dbaccess/DBACCESS.h"

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <string>
#include <system_error>

#include "Quillet/dbaccess/AccessFile.h"
#include "Quillet/dbaccess/CTables.h"
#include "Quillet/dbaccess/DBACCESS_VECTOR.h"
#include "Quillet/dbaccess/VorqOdbcRecordset.h"
#include "Quillet/odbc/Connection.h"
#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/odbc/Transaction.h"
#include "Quillet/platform/MessageBox.h"

using quillet::CDBVariant;
using quillet::CException;
using quillet::CString;
using quillet::odbc::Connection;
using quillet::odbc::Cursor;
using quillet::odbc::DatabaseError;
using quillet::odbc::FieldInfo;

namespace {

// SQL types as ODBC numbers them.
enum eSqlType : short {
    Bit = -7,
    TinyInteger = -6,
    BigInteger = -5,
    LongText = -1,
    Unknown = 0,
    Integer = 4,
    SmallInteger = 5,
    Float = 6,
    Real = 7,
    Double = 8,
    VariableText = 12
};

// The C type of wide text.
constexpr short WideText = -8;

CString SelectAll(const CString& table) {
    return CString("SELECT * FROM [") + table + "]";
}

// Sets the zero of a column's type. For other types the value stays unchanged.
void SetTypedZero(short sqlType, CDBVariant& value) {
    switch (sqlType) {
        case Bit:
            value.SetZero(CDBVariant::Bool);
            break;
        case TinyInteger:
        case Integer:
        case SmallInteger:
            value.SetZero(CDBVariant::Short);
            break;
        case BigInteger:
            value.SetZero(CDBVariant::Long);
            break;
        case LongText:
        case VariableText:
            value.SetZero(CDBVariant::String);
            break;
        case Float:
        case Double:
            value.SetZero(CDBVariant::Double);
            break;
        case Real:
            value.SetZero(CDBVariant::Single);
            break;
        default:
            break;
    }
}

// The clause of a column in the statement that creates a table.
CString ClauseOf(const DBACCESS_COLUMN& column) {
    const char* type = "Char(50)";
    switch (column.m_type) {
        case DBACCESS_COLUMN::Boolean:
            type = "bit";
            break;
        case DBACCESS_COLUMN::Integer:
            type = "int";
            break;
        case DBACCESS_COLUMN::Long:
            type = "long";
            break;
        case DBACCESS_COLUMN::Float:
            type = "float";
            break;
        case DBACCESS_COLUMN::Double:
            type = "double";
            break;
        case DBACCESS_COLUMN::Binary:
            type = "Binary(32768)";
            break;
        default:
            break;
    }
    return CString("[") + column.m_name + "] " + type;
}

CString CreateTable(const CString& table, const DBACCESS_RECORD& columns) {
    CString statement = CString("CREATE TABLE [") + table + "] (";
    const char* separator = "";
    for (const DBACCESS_COLUMN& column : columns) {
        statement += CString(separator) + ClauseOf(column);
        separator = ", ";
    }
    return statement + ")";
}

// The value of a field of the current row as reading a table gives it: a NULL is a zero of its type, and a
// value that the driver can't deliver stays null.
void ReadValue(Cursor& cursor, int field, CDBVariant& value) {
    const short sqlType = cursor.GetODBCFieldInfo(field).m_sqlType;
    value.Clear();
    try {
        if (sqlType == LongText || sqlType == VariableText) {
            cursor.GetFieldValue(field, value, WideText);
        } else if (sqlType != Unknown) {
            cursor.GetFieldValue(field, value);
            if (value.IsNull()) {
                SetTypedZero(sqlType, value);
            }
        }
    } catch (DatabaseError* error) {
        error->Delete();
    }
}

// A table's columns by name, each with the zero of its type. A type without one takes the value of the column
// before it.
void DescribeColumns(Cursor& cursor, DBACCESS_RECORD& record) {
    const int count = cursor.GetODBCFieldCount();
    record.resize(static_cast<std::size_t>(count));
    CDBVariant value;
    for (int field = 0; field < count; ++field) {
        const FieldInfo& info = cursor.GetODBCFieldInfo(field);
        SetTypedZero(info.m_sqlType, value);
        record[field].Set(value);
        record[field].m_name = info.m_name;
    }
}

void ReadRow(Cursor& cursor, DBACCESS_RECORD& record) {
    const int count = cursor.GetODBCFieldCount();
    record.resize(static_cast<std::size_t>(count));
    CDBVariant value;
    for (int field = 0; field < count; ++field) {
        ReadValue(cursor, field, value);
        record[field].Set(value);
        record[field].m_name = cursor.GetODBCFieldInfo(field).m_name;
    }
}

// A count; -1 if the value is not one.
int NumberOf(const CDBVariant& value) {
    switch (value.GetType()) {
        case CDBVariant::Short:
        case CDBVariant::Long:
            return value.GetInteger();
        default:
            return -1;
    }
}

int NumberOf(const std::string& digits) {
    int number = -1;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && stop == end ? number : -1;
}

// Deletes the rows of an open cursor, at its position if the driver can, or else all at once.
void DeleteRows(Cursor& cursor, Connection& connection, const CString& table) {
    if (!cursor.IsEOF() && !cursor.CanDelete()) {
        connection.ExecuteSql(CString("DELETE FROM [") + table + "]");
        return;
    }
    while (!cursor.IsEOF()) {
        cursor.Delete();
        cursor.MoveNext();
    }
}

// While the library is being loaded nobody catches exceptions, and throwing one takes memory. If there is no
// memory for the text, it is made before the first file is opened.
CString FormatAtLoading() {
    constexpr std::size_t MoreThanTheText = 4096;
    void* volatile const room = std::malloc(MoreThanTheText);
    std::free(room);
    return room == nullptr ? CString() : CString(quillet::DefaultConnectFormat);
}

}  // namespace

bool DBACCESS::m_forceExtractTableDefiniton = false;
CString DBACCESS::m_connectFormat = FormatAtLoading();

namespace {

const bool IsFormatMissing = DBACCESS::m_connectFormat.IsEmpty();

const CString& ConnectFormat() {
    if (IsFormatMissing && DBACCESS::m_connectFormat.IsEmpty()) {
        DBACCESS::m_connectFormat = quillet::DefaultConnectFormat;
    }
    return DBACCESS::m_connectFormat;
}

}  // namespace

DBACCESS::DBACCESS(const WCHAR* path) : DBACCESS(path, ReadOnly | NoDialog) {
}

DBACCESS::DBACCESS(const WCHAR* path, unsigned long options) : m_connection(std::make_shared<Connection>()) {
    try {
        quillet::OpenAccessFile(*m_connection, ConnectFormat(), path, options);
    } catch (DatabaseError* error) {
        m_openError = error->Text();
        m_driverMissing = quillet::IsWithoutDriver(*error);
        error->Delete();
    }
}

DBACCESS::DBACCESS(const DBACCESS& other) = default;
DBACCESS& DBACCESS::operator=(const DBACCESS& other) = default;
DBACCESS::~DBACCESS() = default;

void DBACCESS::Close() {
    m_connection.reset();
}

bool DBACCESS::IsOpen() const {
    return m_connection != nullptr && m_connection->IsOpen();
}

bool DBACCESS::CanUpdate() const {
    return IsOpen() && m_connection->CanWrite();
}

const CString& DBACCESS::GetOpenError() const {
    return m_openError;
}

bool DBACCESS::GetTables(std::vector<CString>& names) {
    try {
        CTables tables(m_connection);
        if (!tables.Open(Cursor::Dynaset, nullptr, Cursor::ReadOnly)) {
            return false;
        }
        for (; !tables.IsEOF(); tables.MoveNext()) {
            names.push_back(tables.m_name);
        }
        return true;
    } catch (DatabaseError* error) {
        error->Delete();
        return false;
    }
}

bool DBACCESS::GetTableData(CString table, DBACCESS_VECTOR& rows) {
    const int count = GetRecordsetsNumber(table);
    rows.m_noRows = count <= 0;
    try {
        Cursor cursor(m_connection);
        if (!cursor.Open(Cursor::Dynaset, SelectAll(table).GetString(), Cursor::ReadOnly)) {
            return false;
        }
        if (rows.m_noRows && m_forceExtractTableDefiniton) {
            rows.resize(1);
            DescribeColumns(cursor, rows.front());
            return true;
        }
        rows.resize(static_cast<std::size_t>(count));
        cursor.MoveFirst();
        for (auto row = rows.begin(); row != rows.end() && !cursor.IsEOF(); ++row) {
            ReadRow(cursor, *row);
            cursor.MoveNext();
        }
        return true;
    } catch (DatabaseError* error) {
        error->Delete();
        return false;
    }
}

bool DBACCESS::SetTableData(CString table, const DBACCESS_VECTOR& rows) {
    DBACCESS_RECORD record;
    const bool isNew = !GetRecordset(table, record);
    if (isNew && (rows.empty() || rows.front().empty())) {
        return false;
    }
    try {
        if (!IsOpen()) {
            throw new DatabaseError("08003",
                                    m_openError.IsEmpty() ? "The database is not open." : m_openError);
        }
        m_connection->CheckWritable();
        quillet::odbc::Transaction transaction(*m_connection);
        if (isNew) {
            m_connection->ExecuteSql(CreateTable(table, rows.front()));
            record = rows.front();
        }
        VorqOdbcRecordset cursor(m_connection, table, record);
        if (cursor.Open()) {
            DeleteRows(cursor, *m_connection, table);
            for (const DBACCESS_RECORD& row : rows) {
                cursor.AddNew();
                row.SetData(cursor);
                cursor.Update();
            }
        }
        cursor.Close();
        transaction.Commit();
        return true;
    } catch (DatabaseError* error) {
        quillet::platform::ShowMessage(error->Text(), {});
        error->Delete();
    } catch (CException* error) {
        error->Delete();
    } catch (const std::exception&) {
    }
    return false;
}

bool DBACCESS::GetRecordset(CString table, DBACCESS_RECORD& record) {
    try {
        Cursor cursor(m_connection);
        if (!cursor.Open(Cursor::Dynaset, SelectAll(table).GetString(), 0)) {
            return false;
        }
        if (cursor.IsEOF()) {
            return true;
        }
        const int count = cursor.GetODBCFieldCount();
        record.resize(static_cast<std::size_t>(count));
        CDBVariant value;
        for (int field = 0; field < count; ++field) {
            cursor.GetFieldValue(field, value);
            record[field] = getDBColumnFromDbVariant(value);
            record[field].m_name = cursor.GetODBCFieldInfo(field).m_name;
        }
        return true;
    } catch (DatabaseError* error) {
        error->Delete();
        return false;
    }
}

int DBACCESS::GetRecordsetsNumber(CString table) {
    int count = 0;
    try {
        Cursor cursor(m_connection);
        if (!cursor.Open(Cursor::Dynaset, SelectAll(table).GetString(),
                         Cursor::ReadOnly | Cursor::WithoutValues)) {
            return 0;
        }
        for (; !cursor.IsEOF(); cursor.MoveNext()) {
            ++count;
        }
    } catch (DatabaseError* error) {
        error->Delete();
    }
    return count;
}

int DBACCESS::GetStatedRowsNumber(CString table) {
    const CString statement = CString("SELECT COUNT(*) FROM [") + table + "]";
    try {
        Cursor cursor(m_connection);
        if (!cursor.Open(Cursor::Dynaset, statement.GetString(), Cursor::ReadOnly)) {
            return -1;
        }
        CDBVariant value;
        cursor.GetFieldValue(0, value);
        // Some drivers return the count as text.
        return value.GetString() == nullptr ? NumberOf(value) : NumberOf(value.GetString()->ToUtf8());
    } catch (DatabaseError* error) {
        error->Delete();
        return -1;
    }
}

DBACCESS_COLUMN DBACCESS::getDBColumnFromDbVariant(const CDBVariant& value) {
    DBACCESS_COLUMN column;
    column.Set(value);
    return column;
}
