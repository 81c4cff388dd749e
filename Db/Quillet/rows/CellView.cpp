#include "Quillet/rows/CellView.h"

#include <algorithm>
#include <array>

#include "Quillet/base/Utf8.h"

namespace quillet {

VARTYPE CellView::TypeOf(Kind kind) {
    switch (kind) {
        case Kind::Null:
            return VT_NULL;
        case Kind::Double:
            return VT_R8;
        case Kind::Float:
            return VT_R4;
        case Kind::Long:
            return VT_I4;
        case Kind::Short:
            return VT_I2;
        case Kind::Boolean:
            return VT_BOOL;
        case Kind::Text:
            return VT_BSTR;
        case Kind::Empty:
        case Kind::Variant:
            break;
    }
    return VT_EMPTY;
}

CellView CellView::Plain() const {
    if (m_kind != Kind::Variant) {
        return *this;
    }
    CellView plain = *this;
    const CComVariant& value = AsVariant();
    switch (value.vt) {
        case VT_EMPTY:
            plain = CellView();
            break;
        case VT_NULL:
            plain = Null(m_flag);
            break;
        case VT_R8:
            plain = Double(value.dblVal);
            break;
        case VT_R4:
            plain = Float(value.fltVal);
            break;
        case VT_I4:
            plain = Long(value.lVal);
            break;
        case VT_I2:
            plain = Short(value.iVal);
            break;
        case VT_BOOL:
            plain = Boolean(value.boolVal);
            break;
        default:
            break;
    }
    plain.m_flag = m_flag;
    return plain;
}

const CComVariant& CellView::In(CComVariant& scratch) const {
    if (m_kind == Kind::Variant) {
        return AsVariant();
    }
    CopyTo(scratch);
    return scratch;
}

void CellView::CopyTo(CComVariant& target) const {
    switch (m_kind) {
        case Kind::Empty:
            target.Clear();
            break;
        case Kind::Null:
            target.Clear();
            target.vt = VT_NULL;
            break;
        case Kind::Double:
            target.SetNumber(AsDouble());
            break;
        case Kind::Float:
            target.SetNumber(AsFloat());
            break;
        case Kind::Long:
            target.SetNumber(std::int32_t{AsLong()});
            break;
        case Kind::Short:
            target.SetNumber(AsShort());
            break;
        case Kind::Boolean:
            target.SetNumber(false);
            target.boolVal = AsShort();
            break;
        case Kind::Text:
            CopyTextTo(target);
            break;
        case Kind::Variant:
            target = AsVariant();
            break;
    }
}

void CellView::CopyTextTo(CComVariant& target) const {
    constexpr std::size_t FewUnits = 64;
    const std::string_view text = AsText();
    if (text.size() <= FewUnits && IsAscii(text)) {
        std::array<WCHAR, FewUnits> units;
        std::copy(text.begin(), text.end(), units.begin());
        target.SetText(WideView(units.data(), text.size()));
        return;
    }
    WideString wide;
    AppendWide(text, wide);
    target.SetText(wide);
}

WideView CellView::Wide(WideString& scratch) const {
    if (m_kind == Kind::Variant) {
        return AsVariant().Text();
    }
    scratch.clear();
    if (m_kind == Kind::Text) {
        AppendWide(AsText(), scratch);
    }
    return scratch;
}

}  // namespace quillet
