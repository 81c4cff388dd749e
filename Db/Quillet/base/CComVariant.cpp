#include "Quillet/base/CComVariant.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace quillet {

namespace {

template <typename Number>
HRESULT OrderOf(Number left, Number right) {
    if (left == right) {
        return VARCMP_EQ;
    }
    return left < right ? VARCMP_LT : VARCMP_GT;
}

HRESULT OrderByPlatform(const CComVariant& left, const CComVariant& right) {
    // The platform's function takes its arguments without const but only reads them.
    return MemoryChecked(
        VarCmp(const_cast<CComVariant*>(&left), const_cast<CComVariant*>(&right), LOCALE_USER_DEFAULT, 0));
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
    if (IsBits(other)) {
        const VARIANT bits = other;
        Clear();
        static_cast<VARIANT&>(*this) = bits;
    } else if (this != &other) {
        *this = CComVariant(other);
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
    if (text.size() > std::numeric_limits<UINT>::max()) {
        throw std::bad_alloc();
    }
    // The text may be part of the value's own text.
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    Clear();
    bstrVal = copy;
    vt = VT_BSTR;
}

void CComVariant::SetBytes(const BYTE* bytes, ULONG count, LONG lowerBound) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, lowerBound, count);
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    void* data = nullptr;
    if (count > 0 && SUCCEEDED(SafeArrayAccessData(array, &data))) {
        std::memcpy(data, bytes, count);
        SafeArrayUnaccessData(array);
    }
    Clear();
    parray = array;
    vt = VT_ARRAY | VT_UI1;
}

// Converts into a second value: in place, not every platform keeps the old value when it is out of memory.
HRESULT CComVariant::ConvertTo(VARTYPE type) {
    CComVariant converted;
    HRESULT result = MemoryChecked(VariantChangeType(&converted, this, 0, type));
    if (FAILED(result)) {
        return result;
    }
    result = Clear();
    if (FAILED(result)) {
        return result;
    }
    if (type == VT_I2) {
        // The bits after a short number must be zeros, which the platform does not promise.
        SetNumber(converted.iVal);
    } else {
        *this = std::move(converted);
    }
    return S_OK;
}

bool operator==(const CComVariant& left, const CComVariant& right) {
    if (left.vt != right.vt) {
        return false;
    }
    return left.vt == VT_NULL || Order(left, right) == VARCMP_EQ;
}

bool operator<(const CComVariant& left, const CComVariant& right) {
    return Order(left, right) == VARCMP_LT;
}

HRESULT Order(const CComVariant& left, const CComVariant& right) {
    if (left.vt != right.vt) {
        return OrderByPlatform(left, right);
    }
    switch (left.vt) {
        case VT_I1:
            return OrderOf(static_cast<signed char>(left.cVal), static_cast<signed char>(right.cVal));
        case VT_UI2:
            return OrderOf(left.uiVal, right.uiVal);
        case VT_UI4:
            return OrderOf(left.ulVal, right.ulVal);
        case VT_UI8:
            return OrderOf(left.ullVal, right.ullVal);
        // The platform's result, without calling it.
        case VT_I2:
            return OrderOf(left.iVal, right.iVal);
        case VT_I4:
            return OrderOf(left.lVal, right.lVal);
        case VT_BOOL:
            return OrderOf(left.boolVal, right.boolVal);
        case VT_R4:
            return std::isunordered(left.fltVal, right.fltVal) ? OrderByPlatform(left, right)
                                                               : OrderOf(left.fltVal, right.fltVal);
        case VT_R8:
            return std::isunordered(left.dblVal, right.dblVal) ? OrderByPlatform(left, right)
                                                               : OrderOf(left.dblVal, right.dblVal);
        default:
            return OrderByPlatform(left, right);
    }
}

CComVariant Dereferenced(const CComVariant& value) {
    if ((value.vt & VT_BYREF) == 0) {
        return value;
    }
    if (value.byref == nullptr) {
        return {};
    }
    if (value.vt == (VT_BYREF | VT_VARIANT)) {
        // A variant must not refer to one that refers to another variant.
        const bool isEnd = value.pvarVal->vt == (VT_BYREF | VT_VARIANT);
        return isEnd ? CComVariant() : Dereferenced(CComVariant(*value.pvarVal));
    }
    CComVariant result;
    MemoryChecked(VariantChangeType(&result, const_cast<CComVariant*>(&value), 0,
                                    static_cast<VARTYPE>(value.vt & ~VT_BYREF)));
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
