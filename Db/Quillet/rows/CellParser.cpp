#include "Quillet/rows/CellParser.h"

#include <limits>

#include "Quillet/base/Utf8.h"

namespace quillet {

CellView CellParser::Read(const DbFieldDescr& field, std::string_view text) {
    // Converters take the text up to the first zero.
    text = text.substr(0, text.find('\0'));
    if (field.ConvertedType() == VT_BSTR && text.size() <= std::numeric_limits<std::uint32_t>::max() &&
        IsValidUtf8(text)) {
        return CellView::Text(text);
    }
    m_wide.clear();
    AppendWide(text, m_wide);
    m_value.Clear();
    field.Convert(m_value, m_wide.c_str());
    return CellView::Variant(m_value);
}

}  // namespace quillet
