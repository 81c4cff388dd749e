#include "Quillet/rows/EqualityClasses.h"

#include <bit>

#include "Quillet/platform/Collation.h"

namespace quillet {

using platform::CollationKey;

namespace {

// The entry at the index, which is made when it is the first beyond the end.
template <typename Make>
std::uint32_t Mapped(std::vector<std::uint32_t>& classes, std::uint32_t index, Make make) {
    if (index == classes.size()) {
        const std::uint32_t made = make();
        classes.push_back(made);
    }
    return classes[index];
}

}  // namespace

std::uint64_t EqualityClasses::BitsOf(double number) {
    return std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
}

std::optional<EqualityClasses::NumberKey> EqualityClasses::KeyOf(const CComVariant& value) {
    switch (value.vt) {
        case VT_I2:
            return NumberKey{BitsOf(LONGLONG{value.iVal}), value.vt};
        case VT_I4:
            return NumberKey{BitsOf(LONGLONG{value.lVal}), value.vt};
        case VT_I8:
            return NumberKey{BitsOf(LONGLONG{value.llVal}), value.vt};
        case VT_UI1:
            return NumberKey{BitsOf(LONGLONG{value.bVal}), value.vt};
        case VT_BOOL:
            return NumberKey{BitsOf(LONGLONG{value.boolVal}), value.vt};
        case VT_R4:
            return value.fltVal == value.fltVal
                       ? std::optional(NumberKey{BitsOf(double{value.fltVal}), value.vt})
                       : std::nullopt;
        case VT_R8:
        case VT_DATE:
            return value.dblVal == value.dblVal ? std::optional(NumberKey{BitsOf(value.dblVal), value.vt})
                                                : std::nullopt;
        default:
            return std::nullopt;
    }
}

std::uint32_t EqualityClasses::ClassOf(const CComVariant& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return OneClass(m_empty);
        case VT_NULL:
            return OneClass(m_null);
        case VT_BSTR:
            return ClassOfText(value.Text());
        default:
            break;
    }
    if (const auto key = KeyOf(value)) {
        return Mapped(m_ofNumber, m_numbers.NumberOf(*key), [this] { return NewClass(); });
    }
    // What does not equal itself equals nothing.
    const CComVariant& itself = value;
    return value == itself ? AnyClass() : NewClass();
}

std::uint32_t EqualityClasses::NewClass() {
    m_isLoose.push_back(false);
    return static_cast<std::uint32_t>(m_isLoose.size() - 1);
}

std::uint32_t EqualityClasses::AnyClass() {
    m_areSure = false;
    return Any;
}

std::uint32_t EqualityClasses::OneClass(std::optional<std::uint32_t>& number) {
    if (!number) {
        number = NewClass();
    }
    return *number;
}

std::uint32_t EqualityClasses::ClassOfText(WideView text) {
    const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
    return Mapped(m_ofText, m_texts.NumberOf(bytes), [&] { return ClassOfNewText(text); });
}

std::uint32_t EqualityClasses::ClassOfNewText(WideView text) {
    m_key.clear();
    const CollationKey kind = platform::AppendCollationKey(text, m_key);
    if (kind == CollationKey::None) {
        return AnyClass();
    }
    const auto found = m_keys.NumberOf(m_key);
    const std::uint32_t number = Mapped(m_ofKey, found, [this] { return NewClass(); });
    if (kind == CollationKey::Equality) {
        m_isLoose[number] = true;
        m_areSure = false;
    }
    return number;
}

std::uint32_t TextClasses::ClassOf(const CComVariant& value) {
    if (value.vt == VT_NULL) {
        if (!m_null) {
            m_null = m_count++;
        }
        return *m_null;
    }
    CComVariant converted;
    if (value.vt != VT_BSTR) {
        converted = value;
        if (FAILED(converted.ChangeType(VT_BSTR))) {
            return m_count++;
        }
    }
    m_folded = (value.vt == VT_BSTR ? value : converted).Text();
    platform::FoldCase(m_folded);
    return Mapped(m_ofText, m_texts.NumberOf(m_folded), [this] { return m_count++; });
}

}  // namespace quillet
