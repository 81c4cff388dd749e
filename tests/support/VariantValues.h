// Variants for tables of test cases: constants, converted for a call, compared as readable text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "Quillet/platform/Automation.h"

namespace quillet::test {

constexpr LCID English = 0x0409;
constexpr LCID German = 0x0407;
constexpr LCID French = 0x040C;
constexpr LCID Swedish = 0x041D;

// Whether the system's automation library is Wine's, which differs from the documented rules in places.
inline bool IsWine() {
#if defined(_WIN32)
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

// Whether the port supports every automation type and every array, as the system's library does. A port
// without such a library supports what catalogs contain.
#if defined(_WIN32)
constexpr bool HasEveryType = true;
#else
constexpr bool HasEveryType = false;
#endif

// A variant for a table of cases.
struct Value {
    VARTYPE type = VT_EMPTY;
    long long integer = 0;
    double real = 0;
    const OLECHAR* text = nullptr;
};

constexpr Value Empty() {
    return {VT_EMPTY, 0, 0, nullptr};
}
constexpr Value Null() {
    return {VT_NULL, 0, 0, nullptr};
}
// Of any integer type; unsigned 64-bit values are given by their bits.
constexpr Value Whole(VARTYPE type, long long value) {
    return {type, value, 0, nullptr};
}
constexpr Value I4(long long value) {
    return Whole(VT_I4, value);
}
constexpr Value Bool(bool value) {
    return Whole(VT_BOOL, value ? VARIANT_TRUE : VARIANT_FALSE);
}
constexpr Value R4(double value) {
    return {VT_R4, 0, value, nullptr};
}
constexpr Value R8(double value) {
    return {VT_R8, 0, value, nullptr};
}
constexpr Value Date(double value) {
    return {VT_DATE, 0, value, nullptr};
}
constexpr Value Text(const OLECHAR* text) {
    return {VT_BSTR, 0, 0, text};
}

inline VARIANT MakeVariant(const Value& value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = value.type;
    switch (value.type) {
        case VT_R4:
            variant.fltVal = static_cast<float>(value.real);
            break;
        case VT_R8:
        case VT_DATE:
            variant.dblVal = value.real;
            break;
        case VT_BSTR:
            variant.bstrVal = SysAllocString(value.text);
            break;
        default:
            variant.llVal = value.integer;
            break;
    }
    return variant;
}

// Clears its variant at the end of the scope.
class ScopedVariant {
public:
    ScopedVariant() { VariantInit(&m_value); }
    explicit ScopedVariant(const Value& value) : m_value(MakeVariant(value)) {}
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    ~ScopedVariant() { VariantClear(&m_value); }

    VARIANT* operator&() { return &m_value; }
    VARIANT* operator->() { return &m_value; }
    const VARIANT& operator*() const { return m_value; }

private:
    VARIANT m_value;
};

inline std::string DescribeText(BSTR text) {
    std::string description = "\"";
    for (UINT at = 0; at < SysStringLen(text); ++at) {
        if (text[at] >= 0x20 && text[at] < 0x7F) {
            description += static_cast<char>(text[at]);
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(text[at]));
            description += escape;
        }
    }
    return description + '"';
}

// Type and exact value; equal variants, and only they, have equal descriptions.
inline std::string Describe(const VARIANT& value) {
    const std::string type = "type " + std::to_string(value.vt);
    const auto whole = [&type](auto number) { return type + ": " + std::to_string(number); };
    const auto real = [&type](double number) {
        char digits[64];
        std::snprintf(digits, sizeof digits, ": %.17g", number);
        return type + digits;
    };
    switch (value.vt) {
        case VT_I1:
            return whole(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return whole(value.bVal);
        case VT_I2:
        case VT_BOOL:
            return whole(value.iVal);
        case VT_UI2:
            return whole(value.uiVal);
        case VT_I4:
        case VT_INT:
            return whole(value.lVal);
        case VT_UI4:
        case VT_UINT:
            return whole(value.ulVal);
        case VT_I8:
            return whole(value.llVal);
        case VT_UI8:
            return whole(value.ullVal);
        case VT_R4:
            return real(static_cast<double>(value.fltVal));
        case VT_R8:
        case VT_DATE:
            return real(value.dblVal);
        case VT_BSTR:
            return type + ": " + DescribeText(value.bstrVal);
        default:
            return type;
    }
}

inline std::string Describe(const Value& value) {
    const ScopedVariant variant(value);
    return Describe(*variant);
}

// The names of the rows of a table of cases, each once: rows with the same name form one test.
template <typename Case, std::size_t Count>
std::vector<std::string> NamesOf(const Case (&cases)[Count]) {
    std::vector<std::string> names;
    for (const Case& row : cases) {
        if (std::find(names.begin(), names.end(), row.name) == names.end()) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

}  // namespace quillet::test
