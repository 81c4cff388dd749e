// The wide string of every interface: UTF-16 code units with the customary members.
#pragma once

#include <cstdarg>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "Quillet/base/Utf8.h"

namespace quillet {

// A type that holds a single character. Values treat it as neither a number nor a text.
template <typename Value>
concept SingleCharacter = std::is_same_v<Value, char> || std::is_same_v<Value, char8_t> ||
    std::is_same_v<Value, wchar_t> || std::is_same_v<Value, char16_t> || std::is_same_v<Value, char32_t>;

// A value type. Positions count code units from 0. It converts implicitly from UTF-8 (malformed bytes become
// U+FFFD), so a host on any system passes ordinary literals.
class QUILLET_API CString {
public:
    CString() = default;
    // UTF-8; null gives the empty string.
    CString(const char* utf8);
    // UTF-8.
    CString(const std::string& utf8);
    // Null gives the empty string.
    CString(const WCHAR* text);
    CString(WideView text);
    // UTF-16, also on a system whose wide characters have another type.
    template <typename Unit,
              typename = std::enable_if_t<std::is_same_v<Unit, WCHAR> || std::is_same_v<Unit, char16_t>>>
    CString(const std::basic_string<Unit>& text) : m_text(text.begin(), text.end()) {}

    // Takes over text that is known to be well-formed UTF-8. It stays UTF-8 until its wide characters are
    // asked for, so a text that only passes through costs no conversion.
    static CString FromValidUtf8(std::string text);

    // The UTF-8 form. A lone surrogate becomes U+FFFD.
    std::string ToUtf8() const;
    // The UTF-8 form without a copy where the text still is UTF-8; otherwise storage receives it. The view is
    // valid as long as storage and this string exist unchanged.
    std::string_view ViewUtf8(std::string& storage) const;

    // The null-terminated text; valid until the string changes.
    const WCHAR* GetString() const { return Text().c_str(); }
    operator WideView() const { return Text(); }
    WideView View() const { return Text(); }

    // The length in code units.
    int GetLength() const { return static_cast<int>(Text().size()); }
    bool IsEmpty() const { return m_utf8 ? m_utf8->empty() : m_text.empty(); }
    void Empty();

    // The code unit at position; 0 where there is none.
    WCHAR operator[](int position) const;
    // Replaces one code unit; no effect where there is none.
    void SetAt(int position, WCHAR unit);

    // The first position of what, at or after start; -1 when absent.
    int Find(WCHAR unit, int start = 0) const;
    int Find(const CString& what, int start = 0) const;
    // The last position; -1 when absent.
    int ReverseFind(WCHAR unit) const;

    // Parts of the text; counts and positions out of range are clamped.
    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;

    // Unicode's simple case mapping, independent of the locale. Both return this string.
    CString& MakeLower();
    CString& MakeUpper();

    // Negative, 0 or positive: by code unit, or ignoring case by Unicode's simple mapping.
    int Compare(const CString& other) const;
    int CompareNoCase(const CString& other) const;

    // Replaces every occurrence from left to right; returns how many there were. An empty what replaces none.
    int Replace(const CString& what, const CString& with);

    // Removes blanks, tabs and line ends at both ends; returns this string.
    CString& Trim();

    // Replaces the text by printf's output over UTF-8 text. The format must be a literal, never a value.
    void Format(const char* format, ...) QUILLET_PRINTF_LIKE(2, 3);
    void FormatV(const char* format, std::va_list arguments) QUILLET_PRINTF_LIKE(2, 0);

    CString& operator+=(const CString& other);
    CString& operator+=(WCHAR unit);
    friend CString operator+(CString left, const CString& right) {
        left += right;
        return left;
    }

    friend bool operator==(const CString& left, const CString& right) { return left.Text() == right.Text(); }
    friend bool operator!=(const CString& left, const CString& right) { return !(left == right); }
    friend bool operator<(const CString& left, const CString& right) { return left.Text() < right.Text(); }
    friend bool operator>(const CString& left, const CString& right) { return right < left; }

private:
    const WideString& Text() const {
        if (m_utf8) {
            Widen();
        }
        return m_text;
    }
    WideString& Text() {
        static_cast<const CString*>(this)->Text();
        return m_text;
    }
    void Widen() const;

    // One of the two holds the text: m_utf8 while it is set, m_text otherwise.
    mutable WideString m_text;
    mutable std::shared_ptr<const std::string> m_utf8;
};

// Prints UTF-8.
QUILLET_API std::ostream& operator<<(std::ostream& stream, const CString& text);

// The text in lower case, the form in which the names of tables, fields and indexes are looked up.
QUILLET_API CString Lowered(CString text);

}  // namespace quillet

template <>
struct std::hash<quillet::CString> {
    // Text that still is UTF-8 becomes wide first, so this may throw std::bad_alloc.
    std::size_t operator()(const quillet::CString& text) const {
        return std::hash<quillet::WideView>()(text.View());
    }
};

#if !defined(QUILLET_NO_GLOBAL_NAMES)
using quillet::CString;
#endif
