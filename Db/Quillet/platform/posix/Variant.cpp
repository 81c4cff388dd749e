// The life of a variant: initial state, release and deep copy.
#include "Quillet/platform/Automation.h"
#include "Quillet/platform/posix/VariantKind.h"

namespace quillet::platform {
namespace {

IUnknown* InterfaceOf(const VARIANT& value) {
    return value.vt == VT_DISPATCH ? value.pdispVal : value.punkVal;
}

// A deep copy in a variant that owns nothing yet.
HRESULT CopyValue(const VARIANT& source, VARIANT& copy) {
    copy = source;
    switch (KindOf(source.vt)) {
        case VariantKind::Plain:
        case VariantKind::Reference:
            return S_OK;
        case VariantKind::String:
            if (source.bstrVal != nullptr) {
                copy.bstrVal = SysAllocStringLen(source.bstrVal, SysStringLen(source.bstrVal));
                return copy.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
            }
            return S_OK;
        case VariantKind::Interface:
            if (IUnknown* object = InterfaceOf(source)) {
                object->AddRef();
            }
            return S_OK;
        case VariantKind::ByteArray:
            return SafeArrayCopy(source.parray, &copy.parray);
        case VariantKind::Unknown:
            break;
    }
    return DISP_E_BADVARTYPE;
}

template <typename T>
const T& Target(const VARIANT& reference) {
    return *static_cast<const T*>(reference.byref);
}

}  // namespace

HRESULT Dereference(const VARIANT& source, VARIANT& view) {
    if (source.byref == nullptr) {
        return E_INVALIDARG;
    }
    VariantInit(&view);
    view.vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    switch (view.vt) {
        case VT_VARIANT: {
            const VARIANT& target = *source.pvarVal;
            if (target.vt == (VT_BYREF | VT_VARIANT)) {
                return E_INVALIDARG;
            }
            if ((target.vt & VT_BYREF) != 0) {
                return Dereference(target, view);
            }
            view = target;
            return S_OK;
        }
        case VT_I1:
        case VT_UI1:
            view.bVal = Target<BYTE>(source);
            return S_OK;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            view.iVal = Target<SHORT>(source);
            return S_OK;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_ERROR:
            view.lVal = Target<LONG>(source);
            return S_OK;
        case VT_I8:
        case VT_UI8:
            view.llVal = Target<LONGLONG>(source);
            return S_OK;
        case VT_R4:
            view.fltVal = Target<FLOAT>(source);
            return S_OK;
        case VT_R8:
        case VT_DATE:
            view.dblVal = Target<DOUBLE>(source);
            return S_OK;
        case VT_BSTR:
            view.bstrVal = Target<BSTR>(source);
            return S_OK;
        case VT_DISPATCH:
            view.pdispVal = Target<IDispatch*>(source);
            return S_OK;
        case VT_UNKNOWN:
            view.punkVal = Target<IUnknown*>(source);
            return S_OK;
        case ByteArrayType:
            view.parray = Target<SAFEARRAY*>(source);
            return S_OK;
        default:
            return DISP_E_BADVARTYPE;
    }
}

}  // namespace quillet::platform

using quillet::platform::VariantKind;

void VariantInit(VARIANT* value) {
    if (value != nullptr) {
        *value = VARIANT{};
    }
}

HRESULT VariantClear(VARIANT* value) {
    if (value == nullptr) {
        return E_INVALIDARG;
    }
    switch (quillet::platform::KindOf(value->vt)) {
        case VariantKind::Plain:
        case VariantKind::Reference:
            break;
        case VariantKind::String:
            SysFreeString(value->bstrVal);
            break;
        case VariantKind::Interface:
            if (IUnknown* object = quillet::platform::InterfaceOf(*value)) {
                // The object may access this variant while it is released.
                VariantInit(value);
                object->Release();
                return S_OK;
            }
            break;
        case VariantKind::ByteArray: {
            const HRESULT result = SafeArrayDestroy(value->parray);
            if (FAILED(result)) {
                return result;
            }
            break;
        }
        case VariantKind::Unknown:
            return DISP_E_BADVARTYPE;
    }
    VariantInit(value);
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == nullptr || source == nullptr) {
        return E_INVALIDARG;
    }
    if (target == source) {
        return S_OK;
    }
    VARIANT copy;
    HRESULT result = quillet::platform::CopyValue(*source, copy);
    if (FAILED(result)) {
        return result;
    }
    result = VariantClear(target);
    if (FAILED(result)) {
        VariantClear(&copy);
        return result;
    }
    *target = copy;
    return S_OK;
}
