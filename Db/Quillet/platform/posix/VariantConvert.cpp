// Conversion between variant types by the rules of OLE Automation. Every value passes through one of four
// forms: signed or unsigned integer, real, text.
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "Quillet/platform/Automation.h"
#include "Quillet/platform/posix/DateText.h"
#include "Quillet/platform/posix/Locale.h"
#include "Quillet/platform/posix/NumberText.h"
#include "Quillet/platform/posix/VariantKind.h"

namespace quillet::platform {
namespace {

WideView TextOf(const VARIANT& value) {
    return WideView(value.bstrVal, SysStringLen(value.bstrVal));
}

HRESULT SetText(WideView text, VARIANT& result) {
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return result.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

// A number on its way from one type to another.
struct Number {
    enum class Form { Signed, Unsigned, Real };

    Form form = Form::Signed;
    LONGLONG signedValue = 0;
    ULONGLONG unsignedValue = 0;
    double real = 0;

    static Number Of(LONGLONG value) { return {Form::Signed, value, 0, 0}; }
    static Number Of(ULONGLONG value) { return {Form::Unsigned, 0, value, 0}; }
    static Number Of(double value) { return {Form::Real, 0, 0, value}; }

    bool IsZero() const { return signedValue == 0 && unsignedValue == 0 && real == 0; }

    double AsReal() const {
        switch (form) {
            case Form::Signed:
                return static_cast<double>(signedValue);
            case Form::Unsigned:
                return static_cast<double>(unsignedValue);
            case Form::Real:
                break;
        }
        return real;
    }
};

// False where the type holds no number.
bool NumberOf(const VARIANT& value, Number& number) {
    switch (value.vt) {
        case VT_EMPTY:
            number = Number::Of(LONGLONG{0});
            return true;
        case VT_I1:
            number = Number::Of(LONGLONG{static_cast<signed char>(value.cVal)});
            return true;
        case VT_UI1:
            number = Number::Of(ULONGLONG{value.bVal});
            return true;
        case VT_I2:
            number = Number::Of(LONGLONG{value.iVal});
            return true;
        case VT_BOOL:
            number = Number::Of(LONGLONG{value.boolVal});
            return true;
        case VT_UI2:
            number = Number::Of(ULONGLONG{value.uiVal});
            return true;
        case VT_I4:
        case VT_INT:
            number = Number::Of(LONGLONG{value.lVal});
            return true;
        case VT_UI4:
        case VT_UINT:
            number = Number::Of(ULONGLONG{value.ulVal});
            return true;
        case VT_I8:
            number = Number::Of(value.llVal);
            return true;
        case VT_UI8:
            number = Number::Of(value.ullVal);
            return true;
        case VT_R4:
            number = Number::Of(double{value.fltVal});
            return true;
        case VT_R8:
        case VT_DATE:
            number = Number::Of(value.dblVal);
            return true;
        default:
            return false;
    }
}

template <typename Integer>
HRESULT RoundReal(double real, Integer& result) {
    // The bounds are powers of two, or zero, so they are exact; the comparison refuses NaN.
    const double below = static_cast<double>(std::numeric_limits<Integer>::min());
    const double above = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
    const double rounded = std::nearbyint(real);
    if (!(rounded >= below && rounded < above)) {
        return DISP_E_OVERFLOW;
    }
    result = static_cast<Integer>(rounded);
    return S_OK;
}

template <typename Integer>
HRESULT ToInteger(const Number& number, Integer& result) {
    switch (number.form) {
        case Number::Form::Signed:
            result = static_cast<Integer>(number.signedValue);
            return std::in_range<Integer>(number.signedValue) ? S_OK : DISP_E_OVERFLOW;
        case Number::Form::Unsigned:
            result = static_cast<Integer>(number.unsignedValue);
            return std::in_range<Integer>(number.unsignedValue) ? S_OK : DISP_E_OVERFLOW;
        case Number::Form::Real:
            break;
    }
    return RoundReal(number.real, result);
}

template <typename Integer>
HRESULT ConvertToInteger(const VARIANT& source, LCID locale, Integer& result) {
    if (source.vt == VT_BSTR) {
        TextInteger number;
        const HRESULT read = ReadInteger(TextOf(source), Locale::For(locale), number);
        return FAILED(read) ? read : ToInteger(number, result);
    }
    if (source.vt == VT_BOOL && std::is_unsigned_v<Integer>) {
        // True is all bits set, whatever the width.
        result = static_cast<Integer>(source.boolVal);
        return S_OK;
    }
    Number number;
    return NumberOf(source, number) ? ToInteger(number, result) : DISP_E_TYPEMISMATCH;
}

HRESULT ConvertToDouble(const VARIANT& source, LCID locale, double& result) {
    if (source.vt == VT_BSTR) {
        return ReadDouble(TextOf(source), Locale::For(locale), result);
    }
    Number number;
    if (!NumberOf(source, number)) {
        return DISP_E_TYPEMISMATCH;
    }
    result = number.AsReal();
    return S_OK;
}

HRESULT ConvertToFloat(const VARIANT& source, LCID locale, float& result) {
    if (source.vt == VT_BSTR) {
        return ReadFloat(TextOf(source), Locale::For(locale), result);
    }
    double real = 0;
    const HRESULT converted = ConvertToDouble(source, locale, real);
    if (FAILED(converted)) {
        return converted;
    }
    // Half a unit above the largest float, which is odd: from here on the nearest float is infinite.
    constexpr double BeyondFloats = 0x1.FFFFFFp127;
    constexpr double LargestFloat = static_cast<double>(std::numeric_limits<float>::max());
    if (std::abs(real) >= BeyondFloats) {
        return DISP_E_OVERFLOW;
    }
    result = static_cast<float>(std::abs(real) > LargestFloat ? std::copysign(LargestFloat, real) : real);
    return S_OK;
}

HRESULT ConvertToDate(const VARIANT& source, LCID locale, DATE& result) {
    if (source.vt == VT_BSTR) {
        return ReadDate(TextOf(source), Locale::For(locale), result);
    }
    const HRESULT converted = ConvertToDouble(source, locale, result);
    if (FAILED(converted)) {
        return converted;
    }
    return IsDateInRange(result) ? S_OK : DISP_E_OVERFLOW;
}

bool IsWord(WideView text, WideView word) {
    return text.size() == word.size() && CompareNoCase(text, word) == 0;
}

HRESULT ReadBoolean(WideView whole, LCID locale, VARIANT_BOOL& result) {
    const WideView text = UpToZero(whole);
    if (IsWord(text, u"true") || text == u"#TRUE#") {
        result = VARIANT_TRUE;
        return S_OK;
    }
    if (IsWord(text, u"false") || text == u"#FALSE#") {
        result = VARIANT_FALSE;
        return S_OK;
    }
    double number = 0;
    const HRESULT read = ReadDouble(text, Locale::For(locale), number);
    if (SUCCEEDED(read)) {
        result = number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    }
    return read;
}

HRESULT ConvertToBoolean(const VARIANT& source, LCID locale, VARIANT_BOOL& result) {
    if (source.vt == VT_BSTR) {
        return ReadBoolean(TextOf(source), locale, result);
    }
    Number number;
    if (!NumberOf(source, number)) {
        return DISP_E_TYPEMISMATCH;
    }
    result = number.IsZero() ? VARIANT_FALSE : VARIANT_TRUE;
    return S_OK;
}

// The array's bytes become the string's: two make a unit.
HRESULT BytesToText(SAFEARRAY* array, VARIANT& result) {
    void* bytes = nullptr;
    const HRESULT accessed = SafeArrayAccessData(array, &bytes);
    if (FAILED(accessed)) {
        return accessed;
    }
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocStringByteLen(static_cast<const char*>(bytes), array->rgsabound[0].cElements);
    SafeArrayUnaccessData(array);
    return result.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT ConvertToBytes(const VARIANT& source, VARIANT& result) {
    if (source.vt != VT_BSTR) {
        return DISP_E_TYPEMISMATCH;
    }
    const UINT length = SysStringByteLen(source.bstrVal);
    result.parray = SafeArrayCreateVector(VT_UI1, 0, length);
    if (result.parray == nullptr) {
        return E_OUTOFMEMORY;
    }
    if (length > 0) {
        std::memcpy(result.parray->pvData, source.bstrVal, length);
    }
    return S_OK;
}

// Every value becomes empty or null by being dropped, except null itself, errors and arrays.
HRESULT ConvertToNothing(const VARIANT& source) {
    const bool isMeant = source.vt != VT_NULL && source.vt != VT_ERROR && source.vt != ByteArrayType;
    return isMeant ? S_OK : DISP_E_TYPEMISMATCH;
}

HRESULT ConvertToText(const VARIANT& source, LCID locale, USHORT flags, VARIANT& result) {
    NumberBuffer buffer;
    switch (source.vt) {
        case VT_EMPTY:
            return SetText(WideView(u""), result);
        case ByteArrayType:
            return BytesToText(source.parray, result);
        case VT_BOOL:
            if ((flags & VARIANT_ALPHABOOL) != 0) {
                return SetText(source.boolVal != VARIANT_FALSE ? u"True" : u"False", result);
            }
            return SetText(WriteInteger(std::int64_t{source.boolVal}, buffer), result);
        case VT_R4:
            return SetText(WriteFloat(source.fltVal, Locale::For(locale).Numbers().decimal, buffer), result);
        case VT_R8:
            return SetText(WriteDouble(source.dblVal, Locale::For(locale).Numbers().decimal, buffer), result);
        case VT_DATE: {
            WideString text;
            const HRESULT written = WriteDate(source.date, Locale::For(locale), text);
            return FAILED(written) ? written : SetText(text, result);
        }
        default:
            break;
    }
    Number number;
    if (!NumberOf(source, number)) {
        return DISP_E_TYPEMISMATCH;
    }
    return SetText(number.form == Number::Form::Unsigned
                       ? WriteInteger(std::uint64_t{number.unsignedValue}, buffer)
                       : WriteInteger(std::int64_t{number.signedValue}, buffer),
                   result);
}

// The source is not a reference, and not of the result's type.
HRESULT Convert(const VARIANT& source, LCID locale, USHORT flags, VARTYPE type, VARIANT& result) {
    VariantInit(&result);
    result.vt = type;
    switch (type) {
        case VT_I1: {
            signed char value = 0;
            const HRESULT converted = ConvertToInteger(source, locale, value);
            result.cVal = static_cast<CHAR>(value);
            return converted;
        }
        case VT_UI1:
            return ConvertToInteger(source, locale, result.bVal);
        case VT_I2:
            return ConvertToInteger(source, locale, result.iVal);
        case VT_UI2:
            return ConvertToInteger(source, locale, result.uiVal);
        case VT_I4:
        case VT_INT:
            return ConvertToInteger(source, locale, result.lVal);
        case VT_UI4:
        case VT_UINT:
            return ConvertToInteger(source, locale, result.ulVal);
        case VT_I8:
            return ConvertToInteger(source, locale, result.llVal);
        case VT_UI8:
            return ConvertToInteger(source, locale, result.ullVal);
        case VT_R4:
            return ConvertToFloat(source, locale, result.fltVal);
        case VT_R8:
            return ConvertToDouble(source, locale, result.dblVal);
        case VT_BOOL:
            return ConvertToBoolean(source, locale, result.boolVal);
        case VT_DATE:
            return ConvertToDate(source, locale, result.date);
        case VT_BSTR:
            return ConvertToText(source, locale, flags, result);
        case ByteArrayType:
            return ConvertToBytes(source, result);
        case VT_EMPTY:
        case VT_NULL:
            return ConvertToNothing(source);
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

// Locales, dates and long numbers allocate memory.
HRESULT ConvertCatchingBadAlloc(const VARIANT& source, LCID locale, USHORT flags, VARTYPE type,
                                VARIANT& result) {
    try {
        return Convert(source, locale, flags, type, result);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

// VT_VARIANT, and references and arrays of any known type, are types, though nothing converts to them.
bool IsType(VARTYPE type) {
    const auto element = static_cast<VARTYPE>(type & VT_TYPEMASK);
    const auto form = static_cast<VARTYPE>(type & ~VT_TYPEMASK);
    if (form == 0) {
        return element == VT_VARIANT || KindOf(element) != VariantKind::Unknown;
    }
    const bool refersToNothing = element == VT_EMPTY || element == VT_NULL;
    return (form & ~(VT_BYREF | VT_ARRAY)) == 0 && !refersToNothing && IsType(element);
}

}  // namespace
}  // namespace quillet::platform

HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID locale, USHORT flags, VARTYPE type) {
    using namespace quillet::platform;
    if (target == nullptr || source == nullptr) {
        return E_INVALIDARG;
    }
    VARIANT referred;
    if ((source->vt & VT_BYREF) != 0) {
        if (!IsType(source->vt) || !IsType(type)) {
            return DISP_E_BADVARTYPE;
        }
        if (source->byref == nullptr) {
            return DISP_E_TYPEMISMATCH;
        }
        const HRESULT dereferenced = Dereference(*source, referred);
        if (FAILED(dereferenced)) {
            return dereferenced;
        }
        source = &referred;
    }
    if (KindOf(source->vt) == VariantKind::Unknown || !IsType(type)) {
        return DISP_E_BADVARTYPE;
    }
    if (source->vt == type) {
        return VariantCopy(target, source);
    }
    VARIANT result;
    const HRESULT converted = ConvertCatchingBadAlloc(*source, locale, flags, type, result);
    if (FAILED(converted)) {
        return converted;
    }
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) {
        VariantClear(&result);
        return cleared;
    }
    *target = result;
    return S_OK;
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type) {
    return VariantChangeTypeEx(target, source, LOCALE_USER_DEFAULT, flags, type);
}
