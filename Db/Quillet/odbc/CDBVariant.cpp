#include "Quillet/odbc/CDBVariant.h"

namespace quillet {

void CDBVariant::SetZero(eType type) {
    m_type = type;
    m_hasObject = false;
    m_integer = 0;
    m_single = 0;
    m_double = 0;
    m_date = {};
}

void CDBVariant::SetInteger(eType type, std::int32_t value) {
    SetZero(type);
    m_integer = value;
}

void CDBVariant::SetSingle(float value) {
    SetZero(Single);
    m_single = value;
}

void CDBVariant::SetDouble(double value) {
    SetZero(Double);
    m_double = value;
}

void CDBVariant::SetDate(const DbTimestamp& value) {
    SetZero(Date);
    m_date = value;
}

void CDBVariant::SetText(eType type, CString value) {
    SetZero(type);
    m_hasObject = true;
    m_text = std::move(value);
}

void CDBVariant::SetAsciiString(std::string value) {
    SetZero(AsciiString);
    m_hasObject = true;
    m_ascii = std::move(value);
}

void CDBVariant::SetBinary(CByteArray value) {
    SetZero(Binary);
    m_hasObject = true;
    m_bytes = std::move(value);
}

const CString* CDBVariant::GetString() const {
    return m_hasObject && (m_type == String || m_type == WideString) ? &m_text : nullptr;
}

const std::string* CDBVariant::GetAsciiString() const {
    return m_hasObject && m_type == AsciiString ? &m_ascii : nullptr;
}

const CByteArray* CDBVariant::GetBinary() const {
    return m_hasObject && m_type == Binary ? &m_bytes : nullptr;
}

}  // namespace quillet
