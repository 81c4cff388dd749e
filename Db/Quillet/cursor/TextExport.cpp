#include "Quillet/cursor/TextExport.h"

#include "Quillet/rows/RowsView.h"

namespace quillet {

namespace {

CString TextOf(const CellView& cell) {
    CComVariant converted;
    cell.CopyTo(converted);
    // Bytes are no text, though some platforms would take them for one.
    if ((converted.vt & VT_ARRAY) != 0 || FAILED(converted.ChangeType(VT_BSTR))) {
        return {};
    }
    CString text(converted.Text());
    text.Replace("\n", " ");
    return text;
}

template <typename TextAt>
void AppendLine(std::size_t count, TextAt textAt, WideString& out) {
    for (std::size_t i = 0; i < count; ++i) {
        out += textAt(i).View();
        out += i + 1 < count ? WideView(OLESTR("| ")) : WideView(OLESTR("\n"));
    }
}

}  // namespace

WideString ExportedText(const DbTableDescr& descr, DbTableData& data) {
    WideString text;
    AppendLine(
        descr.size(), [&](std::size_t field) { return descr.at(field)->GetName(); }, text);
    if (data.size() == 0) {
        return text;
    }
    const RowsView rows(*data.GetRows());
    for (uint64 row = 0; row < rows.Count(); ++row) {
        if (rows.HasRow(row)) {
            AppendLine(
                rows.Width(row), [&](std::size_t field) { return TextOf(rows.Cell(row, field)); }, text);
        }
    }
    return text;
}

std::string FirstHalf(const WideString& text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned unit = text[i / 2];
        bytes += static_cast<char>(i % 2 == 0 ? unit & 0xFFU : unit >> 8U);
    }
    return bytes;
}

}  // namespace quillet
