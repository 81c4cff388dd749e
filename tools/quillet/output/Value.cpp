#include "output/Value.h"

#include <algorithm>
#include <cmath>

#include "Quillet/Db_FieldValue.h"
#include "Quillet/base/Utf8.h"
#include "Quillet/platform/NumberText.h"

namespace quillet::tool {

namespace {

constexpr VARTYPE ByteArray = VT_ARRAY | VT_UI1;

// Values that JSON can't represent don't count as numbers.
bool IsFiniteNumber(const CComVariant& cell) {
    switch (cell.vt) {
        case VT_I2:
        case VT_I4:
            return true;
        case VT_R4:
            return std::isfinite(cell.fltVal);
        case VT_R8:
            return std::isfinite(cell.dblVal);
        default:
            return false;
    }
}

Value::Kind KindOf(const CComVariant& cell, bool isTextColumn) {
    switch (cell.vt) {
        case VT_BOOL:
            return Value::Kind::Boolean;
        case VT_BSTR:
            return isTextColumn || !cell.Text().empty() ? Value::Kind::Text : Value::Kind::Null;
        case ByteArray:
            return Value::Kind::Binary;
        default:
            return IsFiniteNumber(cell) ? Value::Kind::Number : Value::Kind::Null;
    }
}

std::string LocaleSeparator() {
    const WCHAR separator = platform::DecimalSeparator();
    std::string utf8;
    AppendUtf8(WideView(&separator, 1), utf8);
    return utf8;
}

void UsePoint(std::string& number) {
    static const std::string Separator = LocaleSeparator();
    const std::size_t place = number.find(Separator);
    if (place != std::string::npos) {
        number.replace(place, Separator.size(), ".");
    }
}

bool IsBlank(char letter) {
    return letter == '\r' || letter == '\n' || letter == ' ';
}

}  // namespace

void ReadValue(const CComVariant& cell, bool isTextColumn, NumberStyle style, Value& value) {
    value.m_kind = KindOf(cell, isTextColumn);
    value.m_text.clear();
    if (value.m_kind == Value::Kind::Null) {
        return;
    }
    AppendValueText(cell, value.m_text);
    if (value.m_kind == Value::Kind::Number && style == NumberStyle::Point) {
        UsePoint(value.m_text);
    } else if (value.m_kind == Value::Kind::Binary) {
        std::string& text = value.m_text;
        text.erase(std::remove_if(text.begin(), text.end(), IsBlank), text.end());
    }
}

}  // namespace quillet::tool
