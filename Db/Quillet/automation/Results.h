// Values of the model as automation types, and back.
#pragma once

#include <cstdint>
#include <new>
#include <optional>
#include <type_traits>

#include "Quillet/automation/MethodFailure.h"
#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// Throws MethodFailure for a null pointer.
inline void Require(const void* pointer) {
    if (pointer == nullptr) {
        throw MethodFailure{E_POINTER, "A result has no place to go to"};
    }
}

// A null string is empty.
inline CString TextOf(BSTR text) {
    return text == nullptr ? CString() : CString(WideView(text, SysStringLen(text)));
}

// The value that a caller passes, directly or by reference. Throws MethodFailure for a null reference and for
// a type that values don't have.
inline CComVariant GivenValue(const VARIANT& given) {
    CComVariant value = Dereferenced(given);
    const bool isOfVariant = given.vt == (VT_BYREF | VT_VARIANT) && given.pvarVal != nullptr;
    if (value.vt == VT_EMPTY && (isOfVariant ? given.pvarVal->vt : given.vt) != VT_EMPTY) {
        throw MethodFailure{DISP_E_BADVARTYPE, "An argument is no value"};
    }
    return value;
}

inline BSTR NewBStr(const CString& text) {
    const WideView view = text.View();
    BSTR const made = SysAllocStringLen(view.data(), static_cast<UINT>(view.size()));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    return made;
}

inline VARIANT_BOOL BooleanOf(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

// Each stores a value in the caller's result, which is empty before.
inline void Store(BSTR& result, const std::optional<CString>& text) {
    // Without a text, the null string.
    if (text.has_value()) {
        result = NewBStr(*text);
    }
}

inline void Store(VARIANT_BOOL& result, bool value) {
    result = BooleanOf(value);
}

inline void Store(long& result, std::int64_t number) {
    result = static_cast<long>(number);
}

inline void Store(VARIANT& result, const VARIANT& value) {
    Check(VariantCopy(&result, const_cast<VARIANT*>(&value)));
}

// Both sides have the same numbers.
template <typename Enumeration, typename ModelEnumeration,
          typename = std::enable_if_t<std::is_enum_v<Enumeration> && std::is_enum_v<ModelEnumeration>>>
void Store(Enumeration& result, ModelEnumeration value) {
    result = static_cast<Enumeration>(value);
}

// With a reference for the caller; null for null.
template <typename Interface, typename Object>
void Store(Interface*& result, Object* object) {
    result = object;
    if (object != nullptr) {
        object->AddRef();
    }
}

}  // namespace quillet::automation
