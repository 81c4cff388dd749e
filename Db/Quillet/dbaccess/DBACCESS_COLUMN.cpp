#include "Quillet/dbaccess/DBACCESS_COLUMN.h"

#include "Quillet/odbc/CDBVariant.h"

using quillet::CDBVariant;
using quillet::CString;

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(const CString& text) {
    m_text = text;
    m_type = Text;
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(const quillet::CByteArray& bytes) {
    m_binary = bytes;
    m_type = Binary;
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(int number) {
    m_type = Boolean;
    m_bool = number;
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(long number) {
    m_type = Long;
    m_long = static_cast<std::int32_t>(number);
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(float number) {
    m_type = Float;
    m_float = number;
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(double number) {
    m_type = Double;
    m_double = number;
    return *this;
}

DBACCESS_COLUMN& DBACCESS_COLUMN::operator=(bool value) {
    return *this = static_cast<int>(value);
}

DBACCESS_COLUMN& DBACCESS_COLUMN::Set(const CDBVariant& value) {
    switch (value.GetType()) {
        case CDBVariant::Null:
            return *this = CString();
        case CDBVariant::Bool:
            return *this = static_cast<int>(value.GetInteger());
        case CDBVariant::Short:
            m_type = Integer;
            m_int = value.GetInteger();
            return *this;
        case CDBVariant::Long:
            return *this = static_cast<long>(value.GetInteger());
        case CDBVariant::Single:
            return *this = value.GetSingle();
        case CDBVariant::Double:
            return *this = value.GetDouble();
        case CDBVariant::String:
        case CDBVariant::WideString:
            return value.GetString() == nullptr ? *this = CString() : *this = *value.GetString();
        case CDBVariant::AsciiString:
            return value.GetAsciiString() == nullptr ? *this = CString()
                                                     : *this = CString(*value.GetAsciiString());
        case CDBVariant::Binary:
            return value.GetBinary() == nullptr ? *this : *this = *value.GetBinary();
        default:
            m_type = None;
            return *this;
    }
}

bool DBACCESS_COLUMN::equal(const DBACCESS_COLUMN& other) const {
    switch (m_type) {
        case Boolean:
            return m_bool == other.m_bool;
        case Integer:
            return m_int == other.m_int;
        case Long:
            return m_long == other.m_long;
        case Float:
            return m_float == other.m_float;
        case Double:
            return m_double == other.m_double;
        case Text:
            return m_text == other.m_text;
        default:
            return false;
    }
}

bool DBACCESS_COLUMN::operator==(const DBACCESS_COLUMN& other) const {
    return m_long == other.m_long && m_int == other.m_int && m_float == other.m_float &&
           m_double == other.m_double && m_text == other.m_text && m_bool == other.m_bool &&
           m_type == other.m_type && m_name == other.m_name;
}

bool DBACCESS_COLUMN::operator<(const DBACCESS_COLUMN& other) const {
    switch (m_type) {
        case Boolean:
            return m_bool < other.m_bool;
        case Integer:
            return m_int < other.m_int;
        case Long:
            return m_long < other.m_long;
        case Float:
            return m_float < other.m_float;
        case Double:
            return m_double < other.m_double;
        case Text:
            return m_text < other.m_text;
        default:
            return false;
    }
}
