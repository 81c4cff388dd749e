// Cells from the text of a file.
#pragma once

#include <string_view>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/rows/CellView.h"

namespace quillet {

// Reads the values of cells one after another, by the converters of their fields.
class CellParser {
public:
    // What DbFieldValue::ValueFromString gives for UTF-8. Valid until the next call, and as long as the text.
    CellView Read(const DbFieldDescr& field, std::string_view text);

private:
    WideString m_wide;
    CComVariant m_value;
};

}  // namespace quillet
