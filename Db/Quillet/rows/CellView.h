// The value of a cell, wherever it is kept.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Quillet/base/CComVariant.h"

namespace quillet {

// Refers to what it shows: valid until the row, or its table, changes.
class CellView {
public:
    enum class Kind : std::uint8_t {
        Empty,
        Null,
        Double,
        Float,
        Long,
        Short,
        Boolean,
        // UTF-8 without malformed parts.
        Text,
        // Any value, in a variant.
        Variant,
    };

    CellView() = default;
    static CellView Null(bool flag) { return {Kind::Null, flag, {}, 0}; }
    static CellView Double(double number) { return {Kind::Double, false, {.m_double = number}, 0}; }
    static CellView Float(float number) { return {Kind::Float, false, {.m_float = number}, 0}; }
    static CellView Long(LONG number) { return {Kind::Long, false, {.m_long = number}, 0}; }
    static CellView Short(SHORT number) { return {Kind::Short, false, {.m_short = number}, 0}; }
    static CellView Boolean(VARIANT_BOOL value) { return {Kind::Boolean, false, {.m_short = value}, 0}; }
    // No longer than 32 bits can count.
    static CellView Text(std::string_view utf8) {
        return {Kind::Text, false, {.m_text = utf8.data()}, static_cast<std::uint32_t>(utf8.size())};
    }
    // With the cell's null flag.
    static CellView Variant(const CComVariant& value, bool flag = false) {
        return {Kind::Variant, flag, {.m_variant = &value}, 0};
    }

    Kind GetKind() const { return m_kind; }
    // The flag of the cell, which says nothing about the value.
    bool IsNull() const { return m_flag; }

    // The value of the kind.
    double AsDouble() const { return m_value.m_double; }
    float AsFloat() const { return m_value.m_float; }
    LONG AsLong() const { return m_value.m_long; }
    SHORT AsShort() const { return m_value.m_short; }
    std::string_view AsText() const { return {m_value.m_text, m_size}; }
    const CComVariant& AsVariant() const { return *m_value.m_variant; }

    // The type that the value has as a variant.
    VARTYPE Type() const { return m_kind == Kind::Variant ? AsVariant().vt : TypeOf(m_kind); }
    // The same for any value of a kind but Variant.
    static VARTYPE TypeOf(Kind kind);
    // The same value by its kind where it is in a variant and has a kind of its own, other than a text.
    CellView Plain() const;
    // The same without the flag.
    CellView Unflagged() const {
        CellView view = *this;
        view.m_flag = false;
        return view;
    }
    // The value as a variant: the one that is shown, or scratch, which is given the value.
    const CComVariant& In(CComVariant& scratch) const;
    // Gives the variant the value.
    void CopyTo(CComVariant& target) const;
    // The characters of a text, in place or in scratch; none for any other value.
    WideView Wide(WideString& scratch) const;

private:
    union Value {
        const CComVariant* m_variant = nullptr;
        double m_double;
        float m_float;
        LONG m_long;
        SHORT m_short;
        const char* m_text;
    };

    void CopyTextTo(CComVariant& target) const;

    CellView(Kind kind, bool flag, Value value, std::uint32_t size)
        : m_value(value), m_size(size), m_kind(kind), m_flag(flag) {}

    Value m_value;
    // Of a text.
    std::uint32_t m_size = 0;
    Kind m_kind = Kind::Empty;
    bool m_flag = false;
};

}  // namespace quillet
