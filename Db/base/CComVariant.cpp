#include "base/CComVariant.h"

#include <cstring>

namespace quillet {

namespace {

HRESULT Compared(const CComVariant& left, const CComVariant& right) {
    // The platform's function takes its arguments without const but only reads them.
    return VarCmp(const_cast<CComVariant*>(&left), const_cast<CComVariant*>(&right), LOCALE_USER_DEFAULT, 0);
}

}  // namespace

CComVariant::CComVariant(const CString& text) : VARIANT() {
    SetText(text.View());
}

CComVariant::CComVariant(IDispatch* dispatch) : VARIANT() {
    vt = VT_DISPATCH;
    pdispVal = dispatch;
    if (dispatch != nullptr) {
        dispatch->AddRef();
    }
}

CComVariant& CComVariant::operator=(const CComVariant& other) {
    if (this != &other) {
        Clear();
        CopyFrom(other);
    }
    return *this;
}

CComVariant& CComVariant::operator=(CComVariant&& other) noexcept {
    if (this != &other) {
        Clear();
        static_cast<VARIANT&>(*this) = other;
        other.Reset();
    }
    return *this;
}

void CComVariant::SetText(WideView text) {
    // The text may be a part of the value's own.
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    Clear();
    bstrVal = copy;
    vt = VT_BSTR;
}

void CComVariant::SetBytes(const BYTE* bytes, ULONG count, LONG lowerBound) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, lowerBound, count);
    void* data = nullptr;
    if (array != nullptr && count > 0 && SUCCEEDED(SafeArrayAccessData(array, &data))) {
        std::memcpy(data, bytes, count);
        SafeArrayUnaccessData(array);
    }
    Clear();
    if (array != nullptr) {
        parray = array;
        vt = VT_ARRAY | VT_UI1;
    }
}

bool operator==(const CComVariant& left, const CComVariant& right) {
    if (left.vt != right.vt) {
        return false;
    }
    return left.vt == VT_NULL || Compared(left, right) == VARCMP_EQ;
}

bool operator<(const CComVariant& left, const CComVariant& right) {
    if (left.vt == right.vt) {
        switch (left.vt) {
            case VT_I1:
                return left.cVal < right.cVal;
            case VT_UI2:
                return left.uiVal < right.uiVal;
            case VT_UI4:
                return left.ulVal < right.ulVal;
            case VT_UI8:
                return left.ullVal < right.ullVal;
            default:
                break;
        }
    }
    return Compared(left, right) == VARCMP_LT;
}

CComVariant Dereferenced(const CComVariant& value) {
    if ((value.vt & VT_BYREF) == 0) {
        return value;
    }
    if (value.vt == (VT_BYREF | VT_VARIANT)) {
        // No variant refers to one that refers to another variant.
        const bool isEnd = value.pvarVal == nullptr || value.pvarVal->vt == (VT_BYREF | VT_VARIANT);
        return isEnd ? CComVariant() : Dereferenced(CComVariant(*value.pvarVal));
    }
    CComVariant result;
    VariantChangeType(&result, const_cast<CComVariant*>(&value), 0,
                      static_cast<VARTYPE>(value.vt & ~VT_BYREF));
    return result;
}

bool EqualIgnoringCase(const CComVariant& left, const CComVariant& right) {
    if (left.vt != VT_BSTR) {
        return left == right;
    }
    if (right.vt == VT_BSTR) {
        return platform::CompareNoCase(left.Text(), right.Text()) == 0;
    }
    CComVariant text = right;
    return SUCCEEDED(text.ChangeType(VT_BSTR)) && platform::CompareNoCase(left.Text(), text.Text()) == 0;
}

}  // namespace quillet
