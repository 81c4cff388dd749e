#include "Quillet/odbc/FieldReader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "Quillet/odbc/Diagnostics.h"

namespace quillet::odbc {
namespace {

// Values up to this many characters or bytes come with the row if the driver allows.
constexpr std::size_t LongestShort = 4000;
// Drivers without column types of their own report less than they deliver.
constexpr std::size_t LeastRoom = 255;
// The buffer for the first piece of a long value.
constexpr std::size_t FirstPiece = 4096;

bool IsText(SQLSMALLINT cType) {
    return cType == SQL_C_WCHAR;
}

bool HasLength(SQLSMALLINT cType) {
    return IsText(cType) || cType == SQL_C_BINARY;
}

// Texts are null-terminated.
std::size_t TerminatorOf(SQLSMALLINT cType) {
    return IsText(cType) ? sizeof(SQLWCHAR) : 0;
}

std::size_t FixedSize(SQLSMALLINT cType) {
    return cType == SQL_C_TYPE_TIMESTAMP ? sizeof(SQL_TIMESTAMP_STRUCT) : sizeof(double);
}

DbTimestamp TimestampOf(const SQL_TIMESTAMP_STRUCT& value) {
    DbTimestamp timestamp;
    timestamp.m_year = value.year;
    timestamp.m_month = value.month;
    timestamp.m_day = value.day;
    timestamp.m_hour = value.hour;
    timestamp.m_minute = value.minute;
    timestamp.m_second = value.second;
    timestamp.m_fraction = static_cast<std::uint32_t>(value.fraction);
    return timestamp;
}

// A 64-bit integer that does not fit in 32 bits becomes its digits.
void SetLargeInteger(SQLBIGINT number, CDBVariant& value) {
    if (number >= std::numeric_limits<std::int32_t>::min() &&
        number <= std::numeric_limits<std::int32_t>::max()) {
        value.SetLong(static_cast<std::int32_t>(number));
    } else {
        value.SetWideString(std::to_string(number));
    }
}

}  // namespace

SQLSMALLINT DefaultCType(short sqlType) {
    switch (sqlType) {
        case SQL_BIT:
            return SQL_C_BIT;
        case SQL_TINYINT:
            return SQL_C_UTINYINT;
        // The integer types that don't name their sign: some drivers check the range of the others wrongly.
        case SQL_SMALLINT:
            return SQL_C_SHORT;
        case SQL_INTEGER:
            return SQL_C_LONG;
        case SQL_BIGINT:
            return SQL_C_SBIGINT;
        case SQL_REAL:
            return SQL_C_FLOAT;
        case SQL_FLOAT:
        case SQL_DOUBLE:
            return SQL_C_DOUBLE;
        case SQL_TYPE_DATE:
        case SQL_TYPE_TIME:
        case SQL_TYPE_TIMESTAMP:
            return SQL_C_TYPE_TIMESTAMP;
        case SQL_BINARY:
        case SQL_VARBINARY:
        case SQL_LONGVARBINARY:
            return SQL_C_BINARY;
        default:
            return SQL_C_WCHAR;
    }
}

FieldReader::FieldReader(SQLUSMALLINT column, const FieldInfo& info, SQLSMALLINT cType)
    : m_column(column),
      m_cType(cType),
      m_isShort(!HasLength(cType) || (info.m_precision > 0 && info.m_precision <= LongestShort)) {
    std::size_t bytes = FixedSize(cType);
    if (HasLength(cType)) {
        const std::size_t room = m_isShort ? std::max(info.m_precision, LeastRoom) : FirstPiece;
        bytes = IsText(cType) ? room * sizeof(SQLWCHAR) + TerminatorOf(cType) : room;
    }
    m_buffer.resize(bytes);
    m_value = m_buffer.data();
}

void FieldReader::Bind(const Handle& statement) {
    Check(SQLBindCol(statement.Get(), m_column, m_cType, m_buffer.data(),
                     static_cast<SQLLEN>(m_buffer.size()), &m_length),
          statement);
    m_isBound = true;
}

void FieldReader::GetValue(const Handle& statement, CDBVariant& value) {
    value.Clear();
    if (!m_isFetched || IsCut()) {
        Fetch(statement);
    }
    // SQL_NULL_DATA. Drivers must not give any other negative length.
    if (m_length < 0) {
        return;
    }
    const auto length = static_cast<std::size_t>(m_length);
    switch (m_cType) {
        case SQL_C_BIT:
            value.SetBool(As<SQLCHAR>() != 0);
            break;
        case SQL_C_UTINYINT:
            value.SetUnsignedChar(As<SQLCHAR>());
            break;
        case SQL_C_SHORT:
            value.SetShort(As<SQLSMALLINT>());
            break;
        case SQL_C_LONG:
            value.SetLong(As<SQLINTEGER>());
            break;
        case SQL_C_SBIGINT:
            SetLargeInteger(As<SQLBIGINT>(), value);
            break;
        case SQL_C_FLOAT:
            value.SetSingle(As<SQLREAL>());
            break;
        case SQL_C_DOUBLE:
            value.SetDouble(As<SQLDOUBLE>());
            break;
        case SQL_C_TYPE_TIMESTAMP:
            value.SetDate(TimestampOf(As<SQL_TIMESTAMP_STRUCT>()));
            break;
        case SQL_C_BINARY:
            value.SetBinary(CByteArray(reinterpret_cast<const BYTE*>(m_value), length));
            break;
        default: {
            WideString text(length / sizeof(WCHAR), WCHAR{});
            std::memcpy(text.data(), m_value, text.size() * sizeof(WCHAR));
            value.SetWideString(CString(WideView(text)));
            break;
        }
    }
}

// Whether the value that came with the row is longer than the bound buffer.
bool FieldReader::IsCut() const {
    const auto room = static_cast<SQLLEN>(m_buffer.size() - TerminatorOf(m_cType));
    return HasLength(m_cType) && m_value == m_buffer.data() && (m_length == SQL_NO_TOTAL || m_length > room);
}

template <typename Value>
Value FieldReader::As() const {
    Value value;
    std::memcpy(&value, m_value, sizeof(value));
    return value;
}

// Fetches the value of this field alone, piece by piece if it is longer than the buffer. A bound buffer is
// left alone: the driver writes the next row into it.
void FieldReader::Fetch(const Handle& statement) {
    std::vector<char>& buffer = m_isBound ? m_longValue : m_buffer;
    if (buffer.empty()) {
        buffer.resize(FirstPiece);
    }
    const std::size_t terminator = TerminatorOf(m_cType);
    std::size_t have = 0;
    m_length = SQL_NULL_DATA;
    for (;;) {
        const std::size_t room = buffer.size() - have;
        SQLLEN length = 0;
        const SQLRETURN result = SQLGetData(statement.Get(), m_column, m_cType, buffer.data() + have,
                                            static_cast<SQLLEN>(room), &length);
        if (result == SQL_NO_DATA) {
            // All of it was fetched, or it is an empty value.
            break;
        }
        Check(result, statement);
        if (length == SQL_NULL_DATA) {
            return;
        }
        if (!HasLength(m_cType)) {
            have = static_cast<std::size_t>(std::max<SQLLEN>(length, 0));
            break;
        }
        const bool isKnown = length != SQL_NO_TOTAL && length >= 0;
        if (isKnown && static_cast<std::size_t>(length) <= room - terminator) {
            have += static_cast<std::size_t>(length);
            break;
        }
        have = buffer.size() - terminator;
        const std::size_t rest = isKnown ? static_cast<std::size_t>(length) - (room - terminator) : 0;
        buffer.resize(std::max(buffer.size() * 2, buffer.size() + rest));
    }
    m_length = static_cast<SQLLEN>(have);
    m_value = buffer.data();
    m_isFetched = true;
}

}  // namespace quillet::odbc
