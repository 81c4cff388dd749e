#include "Quillet/base/CString.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <ostream>

namespace quillet {

namespace {

bool IsBlank(WCHAR unit) {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

}  // namespace

CString::CString(const char* utf8) {
    if (utf8 != nullptr) {
        AppendWide(utf8, m_text);
    }
}

CString::CString(const std::string& utf8) {
    AppendWide(utf8, m_text);
}

CString::CString(const WCHAR* text) : m_text(text != nullptr ? WideString(text) : WideString()) {
}

CString::CString(WideView text) : m_text(text) {
}

CString CString::FromValidUtf8(std::string text) {
    CString result;
    result.m_utf8 = std::make_shared<const std::string>(std::move(text));
    return result;
}

std::string CString::ToUtf8() const {
    std::string storage;
    const std::string_view text = ViewUtf8(storage);
    return text.data() == storage.data() ? std::move(storage) : std::string(text);
}

std::string_view CString::ViewUtf8(std::string& storage) const {
    if (m_utf8) {
        return *m_utf8;
    }
    storage.clear();
    AppendUtf8(m_text, storage);
    return storage;
}

void CString::Widen() const {
    m_text.clear();
    AppendWide(*m_utf8, m_text);
    m_utf8.reset();
}

void CString::Empty() {
    m_utf8.reset();
    m_text.clear();
}

WCHAR CString::operator[](int position) const {
    return position >= 0 && position < GetLength() ? m_text[static_cast<std::size_t>(position)] : WCHAR(0);
}

void CString::SetAt(int position, WCHAR unit) {
    if (position >= 0 && position < GetLength()) {
        m_text[static_cast<std::size_t>(position)] = unit;
    }
}

int CString::Find(WCHAR unit, int start) const {
    const std::size_t found = Text().find(unit, static_cast<std::size_t>(std::max(start, 0)));
    return found == WideString::npos ? -1 : static_cast<int>(found);
}

int CString::Find(const CString& what, int start) const {
    const std::size_t found = Text().find(what.View(), static_cast<std::size_t>(std::max(start, 0)));
    return found == WideString::npos ? -1 : static_cast<int>(found);
}

int CString::ReverseFind(WCHAR unit) const {
    const std::size_t found = Text().rfind(unit);
    return found == WideString::npos ? -1 : static_cast<int>(found);
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    return count <= 0 ? CString() : Mid(std::max(0, GetLength() - count));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    first = std::max(first, 0);
    count = std::min(count, GetLength() - first);
    return count <= 0
               ? CString()
               : CString(View().substr(static_cast<std::size_t>(first), static_cast<std::size_t>(count)));
}

CString& CString::MakeLower() {
    platform::MakeLower(Text());
    return *this;
}

CString& CString::MakeUpper() {
    platform::MakeUpper(Text());
    return *this;
}

int CString::Compare(const CString& other) const {
    return Text().compare(other.Text());
}

int CString::CompareNoCase(const CString& other) const {
    return platform::CompareNoCase(Text(), other.Text());
}

int CString::Replace(const CString& what, const CString& with) {
    const WideView pattern = what.View();
    if (pattern.empty() || Find(what) < 0) {
        return 0;
    }
    const WideString& source = Text();
    WideString result;
    int count = 0;
    std::size_t position = 0;
    for (std::size_t found; (found = source.find(pattern, position)) != WideString::npos; ++count) {
        result.append(source, position, found - position);
        result.append(with.View());
        position = found + pattern.size();
    }
    result.append(source, position);
    m_text = std::move(result);
    return count;
}

CString& CString::Trim() {
    WideString& text = Text();
    const auto end = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
    text.erase(end, text.end());
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), IsBlank));
    return *this;
}

void CString::Format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatV(const char* format, std::va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    errno = 0;
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0 && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    if (length > 0 && std::vsnprintf(text.data(), text.size() + 1, format, arguments) != length) {
        throw std::bad_alloc();
    }
    *this = CString(text);
}

CString& CString::operator+=(const CString& other) {
    Text().append(other.Text());
    return *this;
}

CString& CString::operator+=(WCHAR unit) {
    Text().push_back(unit);
    return *this;
}

std::ostream& operator<<(std::ostream& stream, const CString& text) {
    return stream << text.ToUtf8();
}

CString Lowered(CString text) {
    text.MakeLower();
    return text;
}

}  // namespace quillet
