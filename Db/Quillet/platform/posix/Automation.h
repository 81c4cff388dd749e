// The subset of OLE Automation that the library uses, declared under the names of the SDK.
//
// Supported variant types: empty, null, 8-bit to 64-bit integers with and without sign, int, uint, float,
// double, boolean, date, string, interface pointers, one-dimensional arrays of unsigned bytes, and VT_BYREF
// of those where a script may pass it. Conversion and comparison follow the published rules of OLE
// Automation; the locale LOCALE_USER_DEFAULT is that of the environment (LC_ALL, LC_COLLATE / LC_NUMERIC /
// LC_TIME, LANG), and ICU's root rules with a decimal point where that is "C" or "POSIX".
#pragma once

#include <cstddef>
#include <cstdint>

#include "Quillet/platform/Export.h"

using BYTE = std::uint8_t;
using CHAR = char;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using FLOAT = float;
using DOUBLE = double;
using BOOL = int;
using WCHAR = char16_t;
using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
using LCID = std::uint32_t;
using DISPID = LONG;
using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
using DATE = double;

#define OLESTR(text) u##text
#define STDMETHODCALLTYPE

constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

constexpr HRESULT MakeHresult(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}
constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = MakeHresult(0x80004001U);
constexpr HRESULT E_NOINTERFACE = MakeHresult(0x80004002U);
constexpr HRESULT E_POINTER = MakeHresult(0x80004003U);
constexpr HRESULT E_FAIL = MakeHresult(0x80004005U);
constexpr HRESULT E_UNEXPECTED = MakeHresult(0x8000FFFFU);
constexpr HRESULT E_OUTOFMEMORY = MakeHresult(0x8007000EU);
constexpr HRESULT E_INVALIDARG = MakeHresult(0x80070057U);
constexpr HRESULT DISP_E_UNKNOWNINTERFACE = MakeHresult(0x80020001U);
constexpr HRESULT DISP_E_MEMBERNOTFOUND = MakeHresult(0x80020003U);
constexpr HRESULT DISP_E_PARAMNOTFOUND = MakeHresult(0x80020004U);
constexpr HRESULT DISP_E_TYPEMISMATCH = MakeHresult(0x80020005U);
constexpr HRESULT DISP_E_UNKNOWNNAME = MakeHresult(0x80020006U);
constexpr HRESULT DISP_E_BADVARTYPE = MakeHresult(0x80020008U);
constexpr HRESULT DISP_E_EXCEPTION = MakeHresult(0x80020009U);
constexpr HRESULT DISP_E_OVERFLOW = MakeHresult(0x8002000AU);
constexpr HRESULT DISP_E_BADINDEX = MakeHresult(0x8002000BU);
constexpr HRESULT DISP_E_ARRAYISLOCKED = MakeHresult(0x8002000DU);
constexpr HRESULT DISP_E_BADPARAMCOUNT = MakeHresult(0x8002000EU);

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
constexpr LCID LOCALE_INVARIANT = 0x007F;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

QUILLET_API extern const IID IID_NULL;
QUILLET_API extern const IID IID_IUnknown;
QUILLET_API extern const IID IID_IDispatch;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF
};

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

// The library makes and reads only one-dimensional arrays of VT_UI1.
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    void* pvData;
    SAFEARRAYBOUND rgsabound[1];
};

struct IUnknown;
struct IDispatch;

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        FLOAT fltVal;
        DOUBLE dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        BYTE* pbVal;
        SHORT* piVal;
        LONG* plVal;
        LONGLONG* pllVal;
        FLOAT* pfltVal;
        DOUBLE* pdblVal;
        VARIANT_BOOL* pboolVal;
        DATE* pdate;
        BSTR* pbstrVal;
        IDispatch** ppdispVal;
        VARIANT* pvarVal;
        void* byref;
    };
};
using VARIANTARG = VARIANT;

struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    void* pvReserved;
    HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

constexpr WORD DISPATCH_METHOD = 1;
constexpr WORD DISPATCH_PROPERTYGET = 2;
constexpr WORD DISPATCH_PROPERTYPUT = 4;
constexpr WORD DISPATCH_PROPERTYPUTREF = 8;
constexpr DISPID DISPID_UNKNOWN = -1;
constexpr DISPID DISPID_VALUE = 0;
constexpr DISPID DISPID_PROPERTYPUT = -3;
constexpr DISPID DISPID_NEWENUM = -4;

struct ITypeInfo;

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                                    DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                             DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                             UINT* badArgument) = 0;

protected:
    ~IDispatch() = default;
};

// Strings. A BSTR is prefixed by its length in bytes and terminated; null counts as the empty string.

QUILLET_API BSTR SysAllocString(const OLECHAR* text);
// Copies length units from text, or leaves them unset where text is null.
QUILLET_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
// The same for bytes, of which there may be an odd number.
QUILLET_API BSTR SysAllocStringByteLen(const char* bytes, UINT length);
QUILLET_API void SysFreeString(BSTR text);
// The length in code units, without the terminator; 0 for null.
QUILLET_API UINT SysStringLen(BSTR text);
QUILLET_API UINT SysStringByteLen(BSTR text);

// Arrays.

QUILLET_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, const SAFEARRAYBOUND* bounds);
QUILLET_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements);
QUILLET_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
QUILLET_API HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
QUILLET_API UINT SafeArrayGetDim(SAFEARRAY* array);
QUILLET_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
QUILLET_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
QUILLET_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
QUILLET_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);

// Variants.

// Conversion flag: a boolean becomes "True" or "False" instead of "-1" or "0".
constexpr USHORT VARIANT_ALPHABOOL = 0x0002;
// Comparison flag: letters that differ in case only are equal.
constexpr ULONG NORM_IGNORECASE = 0x00000001;

QUILLET_API void VariantInit(VARIANT* value);
QUILLET_API HRESULT VariantClear(VARIANT* value);
// Deep copy: strings and arrays are duplicated, interface pointers are counted. Source and target may be the
// same.
QUILLET_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
// Converts source into target (they may be the same); on failure the target stays unchanged.
QUILLET_API HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);
QUILLET_API HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID locale, USHORT flags,
                                        VARTYPE type);

constexpr HRESULT VARCMP_LT = 0;
constexpr HRESULT VARCMP_EQ = 1;
constexpr HRESULT VARCMP_GT = 2;
constexpr HRESULT VARCMP_NULL = 3;

// Compares two variants: VARCMP_LT, VARCMP_EQ, VARCMP_GT, VARCMP_NULL where one side is null, or a failure
// code for types that have no order.
QUILLET_API HRESULT VarCmp(VARIANT* left, VARIANT* right, LCID locale, ULONG flags);
