#include "Quillet/platform/NumberText.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string_view>

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

// A character of the basic plane as UTF-8.
class EncodedUnit {
public:
    explicit EncodedUnit(WCHAR unit) {
        if (unit < 0x80) {
            Put(unit);
        } else if (unit < 0x800) {
            Put(0xC0 | (unit >> 6));
            Put(0x80 | (unit & 0x3F));
        } else {
            Put(0xE0 | (unit >> 12));
            Put(0x80 | ((unit >> 6) & 0x3F));
            Put(0x80 | (unit & 0x3F));
        }
    }

    std::string_view Text() const { return {m_bytes.data(), m_length}; }

private:
    void Put(int byte) { m_bytes[m_length++] = static_cast<char>(byte); }

    std::array<char, 3> m_bytes{};
    std::size_t m_length = 0;
};

// The user's decimal separator, which may not be ASCII.
std::string_view SeparatorText() {
    static const EncodedUnit separator(UserLocale().Numbers().decimal);
    return separator.Text();
}

char* WriteWhole(LONG number, char* text) {
    const auto magnitude = static_cast<std::uint64_t>(std::abs(std::int64_t{number}));
    return WriteDecimal(number < 0, {magnitude, 0}, std::string_view(), text);
}

template <typename Real>
char* WriteReal(Real number, int precision, char* text) {
    ShortDecimal decimal;
    if (ToShortDecimal(static_cast<double>(number), precision, decimal)) {
        return WriteDecimal(number < 0, decimal, SeparatorText(), text);
    }
    NumberBuffer buffer;
    const WCHAR separator = UserLocale().Numbers().decimal;
    const WideView wide = precision == FloatDigits
                              ? WriteFloat(static_cast<float>(number), separator, buffer)
                              : WriteDouble(static_cast<double>(number), separator, buffer);
    for (const WCHAR unit : wide) {
        if (unit == separator) {
            text += SeparatorText().copy(text, SeparatorText().size());
        } else {
            *text++ = static_cast<char>(unit);
        }
    }
    return text;
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
    const char* end = text;
    switch (number.vt) {
        case VT_I2:
            end = WriteWhole(number.iVal, text);
            break;
        case VT_I4:
            end = WriteWhole(number.lVal, text);
            break;
        case VT_R4:
            end = WriteReal(number.fltVal, FloatDigits, text);
            break;
        case VT_R8:
            end = WriteReal(number.dblVal, DoubleDigits, text);
            break;
        default:
            break;
    }
    return static_cast<std::size_t>(end - text);
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
