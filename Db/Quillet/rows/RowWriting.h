// Rows as elements of a document.
#pragma once

#include <cstddef>
#include <string>

#include "Quillet/Db_FieldValue.h"
#include "Quillet/rows/CellView.h"
#include "Quillet/xml/Node.h"

namespace quillet {

// Appends <row> with an attribute for each cell. nameAt and cellAt give the name and the cell at a position,
// which shows where an xml::DomError came from; no row is appended then.
template <typename NameAt, typename CellAt>
void AppendRow(const xml::Node& document, const xml::Node& parent, std::size_t cells, NameAt nameAt,
               CellAt cellAt, std::size_t& position) {
    xml::LeafElement row(document, parent, "row");
    std::string text;
    CComVariant scratch;
    for (; position < cells; ++position) {
        const std::string& name = nameAt(position);
        const CellView cell = cellAt(position);
        if (cell.GetKind() == CellView::Kind::Text) {
            row.Attribute(name, cell.AsText());
        } else if (cell.Type() == VT_BSTR) {
            row.Attribute(name, cell.AsVariant().Text());
        } else {
            text.clear();
            AppendValueText(cell.In(scratch), text);
            row.Attribute(name, std::string_view(text));
        }
    }
    row.Append();
}

}  // namespace quillet
