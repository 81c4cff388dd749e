#include "Quillet/Db_FieldValue.h"

#include <utility>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/platform/NumberText.h"
#include "Quillet/values/Base64.h"

namespace {

constexpr uint64 IndexAndFlagEstimate = 5;

// Converts the value to the type where it can be. A conversion to empty or null would lose the value, so
// cells without a value take the new value's type.
void KeepType(quillet::CComVariant& value, VARTYPE type) {
    if (type != VT_EMPTY && type != VT_NULL) {
        value.ChangeType(type);
    }
}

}  // namespace

DbFieldValue::DbFieldValue(DbItem* parent, int index) : DbItem(parent), m_index(index) {
}

DbFieldValue::DbFieldValue(const DbFieldValue& other)
    : DbItem(other), m_index(other.m_index), m_null(other.m_null), m_value(other.m_value) {
}

DbFieldValue& DbFieldValue::operator=(const DbFieldValue& other) {
    m_value = other.m_value;
    m_null = other.m_null;
    return *this;
}

void* DbFieldValue::operator new(std::size_t size) {
    return ::operator new(size);
}

void DbFieldValue::operator delete(void* memory) {
    ::operator delete(memory);
}

void DbFieldValue::operator delete(DbFieldValue* value, std::destroying_delete_t) {
    if (value->m_inBlock) {
        // The memory belongs to the row, which will destroy the value in it: an empty one from now on.
        value->~DbFieldValue();
        (new (value) DbFieldValue)->m_inBlock = true;
        return;
    }
    void* const memory = dynamic_cast<void*>(value);
    value->~DbFieldValue();
    ::operator delete(memory);
}

uint64 DbFieldValue::GetSize() const {
    const uint64 withoutChildren = m_value.vt == VT_BSTR ? EstimateOfText(m_value.Text()) : EstimateOfOther();
    return withoutChildren - DbItem::EstimateOf(0) + DbItem::GetSize();
}

uint64 DbFieldValue::EstimateOfText(quillet::WideView text) {
    constexpr uint64 UnitEstimate = 2;
    return DbItem::EstimateOf(0) + IndexAndFlagEstimate + UnitEstimate * text.size();
}

uint64 DbFieldValue::EstimateOfOther() {
    constexpr uint64 VariantEstimate = 24;
    return DbItem::EstimateOf(0) + IndexAndFlagEstimate + VariantEstimate;
}

void DbFieldValue::SetValue(const quillet::CComVariant& v) {
    quillet::CComVariant value = quillet::Dereferenced(v);
    KeepType(value, m_value.vt);
    m_value = std::move(value);
    SetChanged();
}

void DbFieldValue::ValueToString(quillet::CString& out) const {
    if (m_value.vt == VT_BSTR) {
        out = quillet::CString(m_value.Text());
        return;
    }
    std::string text;
    quillet::AppendValueText(m_value, text);
    out = quillet::CString(text);
}

void DbFieldValue::ValueFromString(const DbFieldDescr& field, const WCHAR* const& text) {
    field.Convert(m_value, text == nullptr ? OLESTR("") : text);
}

void DbFieldValue::ValueFromString(const DbFieldDescr& field, const quillet::CString& text) {
    const VARTYPE type = field.GetType();
    quillet::CComVariant value;
    if (type == (VT_ARRAY | VT_UI1)) {
        quillet::DecodeBase64(text.View(), value);
    } else {
        value.SetText(text.View());
    }
    KeepType(value, type);
    m_value = std::move(value);
}

namespace quillet {

void AppendValueText(const CComVariant& value, std::string& out) {
    switch (value.vt) {
        case VT_I2:
        case VT_I4:
        case VT_R4:
        case VT_R8: {
            char digits[platform::MaxNumberText];
            out.append(digits, platform::NumberToText(value, digits));
            break;
        }
        case VT_BSTR:
            AppendUtf8(value.Text(), out);
            break;
        case VT_BOOL:
            out += value.boolVal == VARIANT_TRUE ? "true" : "false";
            break;
        case VT_ARRAY | VT_UI1:
            AppendBase64(value, out);
            break;
        default:
            break;
    }
}

}  // namespace quillet
