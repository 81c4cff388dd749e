// Numbers as text by the functions that the system's own variant conversion calls; plain decimal numbers are
// read here.
#include "Quillet/platform/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <new>

namespace quillet::platform {
namespace {

WCHAR SeparatorOfTheUser() {
    WCHAR separator[4];
    const int length = GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator, 4);
    return length > 1 ? separator[0] : WCHAR('.');
}

const WCHAR ProcessSeparator = SeparatorOfTheUser();

// Copies the text as UTF-8, frees it and returns the length. Wine keeps the point in a number with an
// exponent, whatever the locale; no number has another point.
std::size_t TakeText(BSTR wide, char (&text)[MaxNumberText]) {
    std::replace(wide, wide + SysStringLen(wide), WCHAR('.'), ProcessSeparator);
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide, static_cast<int>(SysStringLen(wide)), text,
                                           static_cast<int>(MaxNumberText), nullptr, nullptr);
    SysFreeString(wide);
    return static_cast<std::size_t>(length);
}

std::size_t IntegerToText(LONG number, char (&text)[MaxNumberText]) {
    return static_cast<std::size_t>(std::to_chars(text, text + MaxNumberText, number).ptr - text);
}

// A null-terminated copy of a text.
class Terminated {
public:
    explicit Terminated(WideView text) {
        if (text.size() < m_short.size()) {
            m_short[text.copy(m_short.data(), text.size())] = 0;
            m_text = m_short.data();
        } else {
            m_long = text;
            m_text = m_long.c_str();
        }
    }
    Terminated(const Terminated&) = delete;
    Terminated& operator=(const Terminated&) = delete;

    // The system's function asks for a mutable text, but does not change it.
    LPOLESTR Get() const { return const_cast<LPOLESTR>(m_text); }

private:
    std::array<WCHAR, MaxNumberText> m_short;
    WideString m_long;
    const WCHAR* m_text;
};

// Reads a plain decimal number: a minus sign, digits with the decimal separator, an exponent. That gives the
// nearest value for every number of digits, and needs no call of the system. False for any other text, which
// the system may understand.
template <typename Real>
bool ReadPlainNumber(WideView text, Real& value, HRESULT& result) {
    std::array<char, MaxNumberText> plain;
    if (text.size() > plain.size()) {
        return false;
    }
    bool isSmall = false;
    std::size_t length = 0;
    for (const WCHAR unit : text) {
        if (unit == ProcessSeparator) {
            plain[length++] = '.';
        } else if ((unit >= '0' && unit <= '9') || unit == '-' || unit == '+' || unit == 'e' || unit == 'E') {
            isSmall = unit == '-' ? length > 0 : isSmall;
            plain[length++] = static_cast<char>(unit);
        } else {
            return false;
        }
    }
    Real read = 0;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + length, read);
    if (end != plain.data() + length || error == std::errc::invalid_argument) {
        return false;
    }
    result = S_OK;
    if (error == std::errc::result_out_of_range) {
        // Too large, or so small that zero is the nearest.
        result = isSmall ? S_OK : DISP_E_OVERFLOW;
        read = plain[0] == '-' ? -Real(0) : Real(0);
    }
    value = read;
    return true;
}

HRESULT TextToBoolean(WideView text, VARIANT_BOOL& value) {
    const bool isTrue = text == OLESTR("true");
    if (isTrue || text == OLESTR("false")) {
        value = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    return VarBoolFromStr(Terminated(text).Get(), LOCALE_USER_DEFAULT, 0, &value);
}

}  // namespace

std::size_t NumberToText(const VARIANT& number, char (&text)[MaxNumberText]) {
    BSTR wide = nullptr;
    HRESULT result = DISP_E_BADVARTYPE;
    switch (number.vt) {
        case VT_I2:
            return IntegerToText(number.iVal, text);
        case VT_I4:
            return IntegerToText(number.lVal, text);
        case VT_R4:
            result = VarBstrFromR4(number.fltVal, LOCALE_USER_DEFAULT, 0, &wide);
            break;
        case VT_R8:
            result = VarBstrFromR8(number.dblVal, LOCALE_USER_DEFAULT, 0, &wide);
            break;
        default:
            break;
    }
    if (result == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    return SUCCEEDED(result) ? TakeText(wide, text) : 0;
}

HRESULT TextToNumber(WideView text, VARTYPE type, VARIANT* number) {
    VARIANT value;
    VariantInit(&value);
    HRESULT result = DISP_E_BADVARTYPE;
    switch (type) {
        case VT_I4:
            result = VarI4FromStr(Terminated(text).Get(), LOCALE_USER_DEFAULT, 0, &value.lVal);
            break;
        case VT_R4:
            if (!ReadPlainNumber(text, value.fltVal, result)) {
                result = VarR4FromStr(Terminated(text).Get(), LOCALE_USER_DEFAULT, 0, &value.fltVal);
            }
            break;
        case VT_R8:
            if (!ReadPlainNumber(text, value.dblVal, result)) {
                result = VarR8FromStr(Terminated(text).Get(), LOCALE_USER_DEFAULT, 0, &value.dblVal);
            }
            break;
        case VT_BOOL:
            result = TextToBoolean(text, value.boolVal);
            break;
        default:
            break;
    }
    if (SUCCEEDED(result)) {
        value.vt = type;
        *number = value;
    }
    return result;
}

// What the system makes of more than 15 digits is its own affair.
const bool GivesNearestDouble = false;

WCHAR DecimalSeparator() {
    return ProcessSeparator;
}

}  // namespace quillet::platform
