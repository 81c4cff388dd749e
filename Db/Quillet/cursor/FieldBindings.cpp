#include "Quillet/cursor/FieldBindings.h"

#include "Quillet/base/CString.h"

namespace quillet {

namespace {

// The conversion of a type of variable. A long has 32 bits here, as in a cell on every system.
template <typename Variable>
struct Conversion;

template <>
struct Conversion<short> {
    static constexpr VARTYPE Type = VT_I2;
    static short Of(const CComVariant& value) { return value.iVal; }
};

template <>
struct Conversion<int> {
    static constexpr VARTYPE Type = VT_I4;
    static int Of(const CComVariant& value) { return static_cast<int>(value.lVal); }
};

template <>
struct Conversion<long> {
    static constexpr VARTYPE Type = VT_I4;
    static long Of(const CComVariant& value) { return value.lVal; }
};

template <>
struct Conversion<float> {
    static constexpr VARTYPE Type = VT_R4;
    static float Of(const CComVariant& value) { return value.fltVal; }
};

template <>
struct Conversion<double> {
    static constexpr VARTYPE Type = VT_R8;
    static double Of(const CComVariant& value) { return value.dblVal; }
};

template <>
struct Conversion<bool> {
    static constexpr VARTYPE Type = VT_BOOL;
    static bool Of(const CComVariant& value) { return value.boolVal != VARIANT_FALSE; }
};

template <>
struct Conversion<CString> {
    static constexpr VARTYPE Type = VT_BSTR;
    static CString Of(const CComVariant& value) { return CString(value.Text()); }
};

bool IsNothing(const CComVariant& value) {
    return value.vt == VT_EMPTY || value.vt == VT_NULL;
}

// Some platforms take the bytes of an array for those of a text, and a text for bytes.
bool IsArray(const CComVariant& value) {
    return (value.vt & VT_ARRAY) != 0;
}

}  // namespace

void FieldBindings::Bind(void* variable, uint64 field, ReadFunction read, WriteFunction write) {
    if (m_bindings.use_count() != 1) {
        // There is no list yet, or a loop is using it.
        m_bindings = std::make_shared<Bindings>(ListOf(m_bindings));
    }
    (*m_bindings)[variable] = Binding{field, read, write};
}

const FieldBindings::Bindings& FieldBindings::ListOf(const Held& bindings) {
    static const Bindings none;
    return bindings ? *bindings : none;
}

const CComVariant& FieldBindings::Null() {
    static const CComVariant null = [] {
        CComVariant value;
        value.vt = VT_NULL;
        return value;
    }();
    return null;
}

int FieldBindings::FieldOf(const void* variable) const {
    const Bindings& bindings = ListOf(m_bindings);
    const auto found = bindings.find(const_cast<void*>(variable));
    return found == bindings.end() ? -1 : static_cast<int>(found->second.m_field);
}

template <typename Variable>
void FieldBindings::ReadVariable(const CComVariant& value, void* variable) {
    CComVariant converted = Dereferenced(value);
    if (IsNothing(converted)) {
        converted.Clear();
    }
    if (!IsArray(converted) && SUCCEEDED(converted.ChangeType(Conversion<Variable>::Type))) {
        *static_cast<Variable*>(variable) = Conversion<Variable>::Of(converted);
    }
}

template <typename Variable>
void FieldBindings::WriteVariable(CComVariant& value, const void* variable) {
    CComVariant converted(*static_cast<const Variable*>(variable));
    if (!IsArray(value) && SUCCEEDED(converted.ChangeType(Conversion<Variable>::Type)) &&
        (IsNothing(value) || SUCCEEDED(converted.ChangeType(value.vt)))) {
        value = std::move(converted);
    }
}

template void FieldBindings::ReadVariable<short>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<int>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<long>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<float>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<double>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<bool>(const CComVariant& value, void* variable);
template void FieldBindings::ReadVariable<CString>(const CComVariant& value, void* variable);
template void FieldBindings::WriteVariable<short>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<int>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<long>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<float>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<double>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<bool>(CComVariant& value, const void* variable);
template void FieldBindings::WriteVariable<CString>(CComVariant& value, const void* variable);

}  // namespace quillet
