#include "Quillet/platform/NumberText.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "Quillet/platform/posix/Locale.h"
#include "Quillet/platform/posix/NumberText.h"

namespace quillet::platform {

namespace {

constexpr WCHAR Unknown = 0;

// Unknown if there is too little memory to find out. That is checked first: while the library is being loaded
// there may be no memory for an exception either.
WCHAR SeparatorOfTheUser() {
    constexpr std::size_t Enough = std::size_t{4} << 20;
    void* const room = std::malloc(Enough);
    if (room == nullptr) {
        return Unknown;
    }
    std::free(room);
    try {
        return Locale::For(LOCALE_USER_DEFAULT).Numbers().decimal;
    } catch (const std::bad_alloc&) {
        return Unknown;
    }
}

std::atomic<WCHAR> g_processSeparator = SeparatorOfTheUser();

const Locale& UserLocale() {
    static const Locale& locale = Locale::For(LOCALE_USER_DEFAULT);
    return locale;
}

HRESULT TextToBoolean(WideView text, VARIANT* number) {
    const bool isTrue = text == u"true";
    if (isTrue || text == u"false") {
        number->vt = VT_BOOL;
        number->boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (value.bstrVal == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = VariantChangeType(&value, &value, 0, VT_BOOL);
    if (SUCCEEDED(result)) {
        *number = value;
    } else {
        VariantClear(&value);
    }
    return result;
}

HRESULT TextToLong(WideView text, const Locale& locale, VARIANT* number) {
    TextInteger read;
    LONG value = 0;
    HRESULT result = ReadInteger(text, locale, read);
    if (SUCCEEDED(result)) {
        result = ToInteger(read, value);
    }
    if (SUCCEEDED(result)) {
        number->vt = VT_I4;
        number->lVal = value;
    }
    return result;
}

}  // namespace

std::size_t NumberToText(const VARIANT& number, char (&text)[MaxNumberText]) {
    NumberBuffer buffer;
    WideView wide;
    switch (number.vt) {
        case VT_I2:
            wide = WriteInteger(std::int64_t(number.iVal), buffer);
            break;
        case VT_I4:
            wide = WriteInteger(std::int64_t(number.lVal), buffer);
            break;
        case VT_R4:
            wide = WriteFloat(number.fltVal, UserLocale().Numbers().decimal, buffer);
            break;
        case VT_R8:
            wide = WriteDouble(number.dblVal, UserLocale().Numbers().decimal, buffer);
            break;
        default:
            return 0;
    }
    // The decimal separator is the one character that may not be ASCII.
    std::size_t length = 0;
    for (const WCHAR unit : wide) {
        if (unit < 0x80) {
            text[length++] = static_cast<char>(unit);
        } else if (unit < 0x800) {
            text[length++] = static_cast<char>(0xC0 | (unit >> 6));
            text[length++] = static_cast<char>(0x80 | (unit & 0x3F));
        } else {
            text[length++] = static_cast<char>(0xE0 | (unit >> 12));
            text[length++] = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
            text[length++] = static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return length;
}

HRESULT TextToNumber(WideView text, VARTYPE type, VARIANT* number) {
    const Locale& locale = UserLocale();
    if (type == VT_R8) {
        double value = 0;
        const HRESULT result = ReadDouble(text, locale, value);
        if (SUCCEEDED(result)) {
            number->vt = VT_R8;
            number->dblVal = value;
        }
        return result;
    }
    if (type == VT_R4) {
        float value = 0;
        const HRESULT result = ReadFloat(text, locale, value);
        if (SUCCEEDED(result)) {
            number->vt = VT_R4;
            number->fltVal = value;
        }
        return result;
    }
    if (type == VT_BOOL) {
        return TextToBoolean(text, number);
    }
    return type == VT_I4 ? TextToLong(text, locale, number) : DISP_E_BADVARTYPE;
}

const bool GivesNearestDouble = true;

WCHAR DecimalSeparator() {
    WCHAR separator = g_processSeparator;
    if (separator == Unknown) {
        // It could not be read at load time, out of memory.
        separator = Locale::For(LOCALE_USER_DEFAULT).Numbers().decimal;
        g_processSeparator = separator;
    }
    return separator;
}

}  // namespace quillet::platform
