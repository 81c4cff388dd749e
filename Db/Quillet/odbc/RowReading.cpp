#include "Quillet/odbc/RowReading.h"

#include <algorithm>
#include <cstddef>

namespace quillet::odbc {

void RowReading::Boolean(int position, const CString&, std::int32_t& slot) {
    if (Read(position) != nullptr) {
        slot = m_value.GetInteger();
    }
}

void RowReading::Integer(int position, const CString&, std::int32_t& slot) {
    if (Read(position) != nullptr) {
        slot = m_value.GetInteger();
    }
}

void RowReading::Long(int position, const CString&, std::int32_t& slot) {
    if (Read(position) != nullptr) {
        slot = m_value.GetInteger();
    }
}

void RowReading::Single(int position, const CString&, float& slot) {
    if (Read(position) != nullptr) {
        slot = m_value.GetSingle();
    }
}

void RowReading::Double(int position, const CString&, double& slot) {
    if (Read(position) != nullptr) {
        slot = m_value.GetDouble();
    }
}

void RowReading::Binary(int position, const CString&, CByteArray& slot, int) {
    if (const SlotBinding* binding = Read(position)) {
        const CByteArray* bytes = m_value.GetBinary();
        slot = bytes == nullptr ? CByteArray() : *bytes;
        slot.SetSize(std::min(slot.GetSize(), binding->m_maximum));
    }
}

void RowReading::Text(int position, const CString&, CString& slot, int) {
    if (const SlotBinding* binding = Read(position)) {
        const CString* text = m_value.GetString();
        slot = text == nullptr ? CString() : text->Left(binding->m_maximum);
    }
}

const SlotBinding* RowReading::Read(int position) {
    const auto index = static_cast<std::size_t>(position);
    if (index >= m_bindings.size() || m_bindings[index].m_field < 0) {
        return nullptr;
    }
    m_readers[static_cast<std::size_t>(m_bindings[index].m_field)].GetValue(m_statement, m_value);
    return &m_bindings[index];
}

}  // namespace quillet::odbc
