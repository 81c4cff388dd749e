// What a variant's type tag says about the ownership of its value, and access through VT_BYREF.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::platform {

constexpr VARTYPE ByteArrayType = VT_ARRAY | VT_UI1;

enum class VariantKind { Plain, String, Interface, ByteArray, Reference, Unknown };

constexpr VariantKind KindOf(VARTYPE type) {
    if ((type & VT_BYREF) != 0) {
        return VariantKind::Reference;
    }
    switch (type) {
        case VT_EMPTY:
        case VT_NULL:
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_R8:
        case VT_BOOL:
        case VT_DATE:
        case VT_ERROR:
            return VariantKind::Plain;
        case VT_BSTR:
            return VariantKind::String;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return VariantKind::Interface;
        case ByteArrayType:
            return VariantKind::ByteArray;
        default:
            return VariantKind::Unknown;
    }
}

// Makes view a shallow copy of the value that a VT_BYREF source points to; it owns nothing and must never be
// cleared. A reference to a variant is followed once more, as that variant may itself refer to a plain value.
// DISP_E_BADVARTYPE if the type has no reference form, E_INVALIDARG for a null reference and for one that
// would have to be followed further.
HRESULT Dereference(const VARIANT& source, VARIANT& view);

}  // namespace quillet::platform
