#include "Quillet/rows/EqualityClasses.h"

#include "Quillet/platform/Collation.h"
#include "Quillet/rows/ColumnCells.h"

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

std::optional<EqualityClasses::NumberKey> EqualityClasses::KeyOf(const CellView& value) {
    switch (value.GetKind()) {
        case CellView::Kind::Double:
            return KeyOfReal(value.AsDouble(), VT_R8);
        case CellView::Kind::Float:
            return KeyOfReal(double{value.AsFloat()}, VT_R4);
        case CellView::Kind::Long:
            return NumberKey{BitsOf(LONGLONG{value.AsLong()}), VT_I4};
        case CellView::Kind::Short:
            return NumberKey{BitsOf(LONGLONG{value.AsShort()}), VT_I2};
        case CellView::Kind::Boolean:
            return NumberKey{BitsOf(LONGLONG{value.AsShort()}), VT_BOOL};
        case CellView::Kind::Variant:
            break;
        default:
            return std::nullopt;
    }
    const CComVariant& variant = value.AsVariant();
    switch (variant.vt) {
        case VT_I8:
            return NumberKey{BitsOf(LONGLONG{variant.llVal}), VT_I8};
        case VT_UI1:
            return NumberKey{BitsOf(LONGLONG{variant.bVal}), VT_UI1};
        case VT_DATE:
            return KeyOfReal(variant.dblVal, VT_DATE);
        default:
            return std::nullopt;
    }
}

std::uint32_t EqualityClasses::ClassOf(const CellView& cell) {
    const CellView value = cell.Plain();
    switch (value.Type()) {
        case VT_EMPTY:
            return OneClass(m_empty);
        case VT_NULL:
            return OneClass(m_null);
        case VT_BSTR:
            return ClassOfText(value);
        default:
            break;
    }
    if (const auto key = KeyOf(value)) {
        return ClassOfKey(*key);
    }
    // What does not equal itself equals nothing.
    CComVariant scratch;
    const CComVariant& variant = value.In(scratch);
    const CComVariant& itself = variant;
    return variant == itself ? AnyClass() : NewClass();
}

std::vector<std::uint32_t> EqualityClasses::ClassesOf(const RowSelection& rows, uint64 field) {
    std::vector<std::uint32_t> numbers(rows.Size());
    WithColumnCells(rows, field, [&](const auto& cells, CellView::Kind kind) {
        const VARTYPE type = CellView::TypeOf(kind);
        for (std::size_t row = 0; row < numbers.size(); ++row) {
            const auto value = cells.At(row);
            numbers[row] = value ? ClassInPlace(*value, type) : ClassOf(rows.Cell(row, field));
        }
    });
    return numbers;
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

std::uint32_t EqualityClasses::ClassOfText(const CellView& text) {
    return Mapped(m_ofText, m_texts.NumberOf(text), [&] { return ClassOfNewText(text.Wide(m_wide)); });
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

std::uint32_t TextClasses::ClassOf(const CellView& cell) {
    CComVariant converted;
    CellView text = cell;
    if (text.Type() == VT_NULL) {
        if (!m_null) {
            m_null = m_count++;
        }
        return *m_null;
    }
    if (text.Type() != VT_BSTR) {
        text.CopyTo(converted);
        if (FAILED(converted.ChangeType(VT_BSTR))) {
            return m_count++;
        }
        text = CellView::Variant(converted);
    }
    return Mapped(m_ofText, m_texts.NumberOf(text), [&] {
        m_wide = WideString(text.Wide(m_wide));
        platform::FoldCase(m_wide);
        return Mapped(m_ofFolding, m_foldings.NumberOf(m_wide), [this] { return m_count++; });
    });
}

}  // namespace quillet
