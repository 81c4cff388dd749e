#include "Quillet/odbc/Cursor.h"

#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "Quillet/odbc/Diagnostics.h"
#include "Quillet/odbc/FieldReader.h"
#include "Quillet/odbc/Handle.h"
#include "Quillet/odbc/RowReading.h"
#include "Quillet/odbc/RowWriting.h"
#include "Quillet/odbc/SlotBindings.h"

namespace quillet::odbc {
namespace {

// The value that a driver gave an attribute; the weakest if it does not say.
SQLULEN Attribute(const Handle& statement, SQLINTEGER attribute, SQLULEN weakest) {
    SQLULEN value = weakest;
    return SQL_SUCCEEDED(SQLGetStmtAttrW(statement.Get(), attribute, &value, SQL_IS_UINTEGER, nullptr))
               ? value
               : weakest;
}

// Whether the name of a column's type begins with "binary".
bool IsCalledBinary(const Handle& statement, SQLUSMALLINT column) {
    SQLWCHAR name[64] = {};
    // A driver may write to both without checking them for null.
    SQLSMALLINT length = 0;
    SQLLEN number = 0;
    if (!SQL_SUCCEEDED(SQLColAttributeW(statement.Get(), column, SQL_DESC_TYPE_NAME, name, sizeof(name),
                                        &length, &number))) {
        return false;
    }
    const CString binary = "binary";
    return CString(WideView(name)).Left(binary.GetLength()).CompareNoCase(binary) == 0;
}

FieldInfo Describe(const Handle& statement, SQLUSMALLINT column) {
    FieldInfo info;
    SQLWCHAR name[256] = {};
    SQLSMALLINT nameLength = 0;
    SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
    SQLULEN size = 0;
    Check(SQLDescribeColW(statement.Get(), column, name, static_cast<SQLSMALLINT>(std::size(name)),
                          &nameLength, &info.m_sqlType, &size, &info.m_scale, &nullable),
          statement);
    info.m_name = CString(WideView(name));
    info.m_precision = size;
    info.m_isNullable = nullable != SQL_NO_NULLS;
    if (info.m_sqlType == SQL_FLOAT && size == sizeof(float)) {
        info.m_sqlType = SQL_REAL;
    }
    if (info.m_sqlType == SQL_LONGVARCHAR && IsCalledBinary(statement, column)) {
        info.m_sqlType = SQL_LONGVARBINARY;
    }
    return info;
}

}  // namespace

struct Cursor::State {
    // Declared first, so that the statement is freed before what it belongs to.
    std::shared_ptr<const Handle> m_session;
    Handle m_statement;
    std::vector<FieldInfo> m_fields;
    std::vector<FieldReader> m_readers;
    std::vector<SlotBinding> m_bindings;
    std::unique_ptr<RowWriting> m_writing;
    // Why rows can't be deleted here, in the driver's words.
    std::optional<DatabaseError> m_refusal;
    // What the driver says of the row that was fetched; a success where it says nothing.
    SQLUSMALLINT m_rowStatus = SQL_ROW_SUCCESS;
    unsigned int m_options = 0;
    bool m_isOpen = false;
    bool m_isAtFirst = false;
    bool m_isEof = true;
    bool m_isAdding = false;
};

const CRuntimeClass Cursor::classCursor{"Cursor", &CObject::classCObject};

Cursor::Cursor(std::shared_ptr<Connection> connection) : m_connection(std::move(connection)) {
}

Cursor::~Cursor() = default;

const CRuntimeClass* Cursor::GetRuntimeClass() const {
    return &classCursor;
}

bool Cursor::Open(unsigned int, const WCHAR* sql, unsigned int options) {
    const Handle* statement = OpenStatement(options);
    if (statement == nullptr) {
        return false;
    }
    WideString text(sql == nullptr ? GetDefaultSQL().View() : WideView(sql));
    const SQLRETURN result =
        SQLExecDirectW(statement->Get(), text.data(), static_cast<SQLINTEGER>(text.size()));
    Check(result, *statement);
    OpenRows();
    return true;
}

const Handle* Cursor::OpenStatement(unsigned int options) {
    Close();
    if (m_connection == nullptr || !m_connection->IsOpen()) {
        return nullptr;
    }
    m_state = std::make_unique<State>();
    m_state->m_options = options;
    m_state->m_session = m_connection->Session();
    m_state->m_statement = Handle(SQL_HANDLE_STMT, *m_state->m_session);
    const Handle& statement = m_state->m_statement;
    const bool isUpdatable = (options & ReadOnly) == 0 && !m_connection->IsReadOnly();
    // A driver without keysets takes another cursor and says so, or stays forward-only.
    SQLSetStmtAttrW(statement.Get(), SQL_ATTR_CURSOR_TYPE, NumberAttribute(SQL_CURSOR_KEYSET_DRIVEN),
                    SQL_IS_UINTEGER);
    SQLSetStmtAttrW(statement.Get(), SQL_ATTR_ROW_STATUS_PTR, &m_state->m_rowStatus, SQL_IS_POINTER);
    if (isUpdatable) {
        const SQLRETURN result = SQLSetStmtAttrW(statement.Get(), SQL_ATTR_CONCURRENCY,
                                                 NumberAttribute(SQL_CONCUR_ROWVER), SQL_IS_UINTEGER);
        if (result != SQL_SUCCESS) {
            m_state->m_refusal.emplace(DiagnosticsOf(statement));
        }
    }
    return &statement;
}

void Cursor::OpenRows() {
    const Handle& statement = m_state->m_statement;
    SQLSMALLINT count = 0;
    Check(SQLNumResultCols(statement.Get(), &count), statement);
    for (SQLSMALLINT field = 0; field < count; ++field) {
        m_state->m_fields.push_back(Describe(statement, static_cast<SQLUSMALLINT>(field + 1)));
    }
    if ((m_state->m_options & WithoutValues) == 0) {
        BindSlots();
        BindColumns();
    }
    m_state->m_isOpen = true;
    // A statement that gives no columns gives no rows.
    if (count > 0) {
        Move(false);
    }
    m_state->m_isAtFirst = true;
}

void Cursor::BindSlots() {
    SlotBindings bindings(m_state->m_fields);
    DoFieldExchange(&bindings);
    m_state->m_bindings = bindings.Take();
}

// A column is fetched in the type of the slot that it is bound to.
void Cursor::BindColumns() {
    std::vector<FieldInfo>& fields = m_state->m_fields;
    std::vector<SQLSMALLINT> types;
    types.reserve(fields.size());
    for (const FieldInfo& field : fields) {
        types.push_back(DefaultCType(field.m_sqlType));
    }
    for (const SlotBinding& binding : m_state->m_bindings) {
        if (binding.m_field >= 0) {
            types[static_cast<std::size_t>(binding.m_field)] = binding.m_cType;
        }
    }
    bool canBind = m_connection->CanBindColumns();
    m_state->m_readers.reserve(fields.size());
    for (std::size_t field = 0; field < fields.size(); ++field) {
        FieldReader& reader = m_state->m_readers.emplace_back(static_cast<SQLUSMALLINT>(field + 1),
                                                              fields[field], types[field]);
        if (canBind && reader.IsShort()) {
            reader.Bind(m_state->m_statement);
        } else {
            // A long value is fetched when the row is there, and so is every column after it unless the
            // driver takes columns in any order.
            canBind = canBind && m_connection->CanGetAnyColumn();
        }
    }
}

void Cursor::Close() {
    m_state.reset();
}

bool Cursor::IsOpen() const {
    return m_state != nullptr && m_state->m_isOpen;
}

bool Cursor::IsEOF() const {
    return !IsOpen() || m_state->m_isEof;
}

void Cursor::MoveFirst() {
    if (!IsOpen() || m_state->m_isAtFirst) {
        return;
    }
    Move(true);
    m_state->m_isAtFirst = true;
}

void Cursor::MoveNext() {
    if (!IsEOF()) {
        Move(false);
    }
}

void Cursor::Move(bool toFirst) {
    Fetch(toFirst);
    while (!m_state->m_isEof && !TakesRow()) {
        Fetch(false);
    }
}

void Cursor::Fetch(bool first) {
    const Handle& statement = m_state->m_statement;
    m_state->m_isAtFirst = false;
    // In the place of a row that was deleted since the cursor opened, a keyset has a hole.
    SQLRETURN result = SQL_SUCCESS;
    do {
        result = first ? SQLFetchScroll(statement.Get(), SQL_FETCH_FIRST, 0) : SQLFetch(statement.Get());
        first = false;
    } while (SQL_SUCCEEDED(result) && m_state->m_rowStatus == SQL_ROW_DELETED);
    m_state->m_isEof = result == SQL_NO_DATA;
    if (m_state->m_isEof) {
        return;
    }
    if (!SQL_SUCCEEDED(result)) {
        m_state->m_isEof = true;
        ThrowDiagnostics(statement);
    }
    for (FieldReader& reader : m_state->m_readers) {
        reader.NextRow();
    }
    if (!m_state->m_bindings.empty()) {
        RowReading reading(statement, m_state->m_bindings, m_state->m_readers);
        DoFieldExchange(&reading);
    }
}

int Cursor::GetODBCFieldCount() const {
    return IsOpen() ? static_cast<int>(m_state->m_fields.size()) : 0;
}

const FieldInfo& Cursor::GetODBCFieldInfo(int field) const {
    static const FieldInfo nowhere;
    return field >= 0 && field < GetODBCFieldCount() ? m_state->m_fields[static_cast<std::size_t>(field)]
                                                     : nowhere;
}

void Cursor::GetFieldValue(int field, CDBVariant& value, short cType) {
    const auto index = static_cast<std::size_t>(field);
    if (IsEOF() || index >= m_state->m_readers.size()) {
        value.Clear();
        return;
    }
    FieldReader& reader = m_state->m_readers[index];
    if (cType == DefaultType || cType == reader.CType()) {
        reader.GetValue(m_state->m_statement, value);
        return;
    }
    FieldReader other(static_cast<SQLUSMALLINT>(index + 1), m_state->m_fields[index], cType);
    other.GetValue(m_state->m_statement, value);
}

bool Cursor::CanDelete() const {
    if (!IsOpen() || (m_state->m_options & ReadOnly) != 0 || m_connection->IsReadOnly() ||
        !m_connection->CanWriteAtPosition()) {
        return false;
    }
    const Handle& statement = m_state->m_statement;
    const SQLULEN type = Attribute(statement, SQL_ATTR_CURSOR_TYPE, SQL_CURSOR_FORWARD_ONLY);
    return (type == SQL_CURSOR_KEYSET_DRIVEN || type == SQL_CURSOR_DYNAMIC) &&
           Attribute(statement, SQL_ATTR_CONCURRENCY, SQL_CONCUR_READ_ONLY) != SQL_CONCUR_READ_ONLY;
}

void Cursor::Delete() {
    CheckUpdatable();
    if (!CanDelete() && m_state->m_refusal.has_value()) {
        throw new DatabaseError(*m_state->m_refusal);
    }
    const Handle& statement = m_state->m_statement;
    Check(SQLSetPos(statement.Get(), 1, SQL_DELETE, SQL_LOCK_NO_CHANGE), statement);
}

void Cursor::AddNew() {
    CheckUpdatable();
    m_state->m_isAdding = true;
}

void Cursor::Update() {
    CheckUpdatable();
    if (!std::exchange(m_state->m_isAdding, false)) {
        throw new DatabaseError("HY010", "No row was begun that could be written.");
    }
    if (m_state->m_writing == nullptr) {
        // A row buffer that had no slots when the cursor opened may have got them with the row.
        if (m_state->m_bindings.empty()) {
            BindSlots();
        }
        if (m_state->m_bindings.empty()) {
            throw new DatabaseError("HY000", "No field of the table can be written.");
        }
        m_state->m_writing =
            std::make_unique<RowWriting>(*m_state->m_session, GetTableName(), m_state->m_bindings);
    }
    m_state->m_writing->Begin();
    DoFieldExchange(m_state->m_writing.get());
    m_state->m_writing->Write();
}

void Cursor::CheckUpdatable() const {
    if (!IsOpen()) {
        throw new DatabaseError("24000", "The cursor is not open.");
    }
    m_connection->CheckWritable();
    if ((m_state->m_options & ReadOnly) != 0) {
        throw new DatabaseError("25000", "The cursor was opened to be read only.");
    }
}

CString Cursor::GetDefaultConnect() {
    return "ODBC;";
}

CString Cursor::GetDefaultSQL() {
    return "";
}

void Cursor::DoFieldExchange(FieldExchange*) {
}

bool Cursor::TakesRow() const {
    return true;
}

CString Cursor::GetTableName() const {
    return "";
}

}  // namespace quillet::odbc
