#include "Quillet/cursor/TextExport.h"

namespace quillet {

namespace {

CString TextOf(const DbFieldDescr& field) {
    return field.GetName();
}

CString TextOf(const DbFieldValue& cell) {
    CComVariant converted = cell.GetVariant();
    // Bytes are no text, though some platforms would take them for one.
    if ((converted.vt & VT_ARRAY) != 0 || FAILED(converted.ChangeType(VT_BSTR))) {
        return {};
    }
    CString text(converted.Text());
    text.Replace("\n", " ");
    return text;
}

template <typename List>
void AppendLine(const List& list, WideString& out) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        out += TextOf(*list.at(i)).View();
        out += i + 1 < list.size() ? WideView(OLESTR("| ")) : WideView(OLESTR("\n"));
    }
}

}  // namespace

WideString ExportedText(const DbTableDescr& descr, DbTableData& data) {
    WideString text;
    AppendLine(descr, text);
    for (uint64 i = 0; i < data.size(); ++i) {
        AppendLine(data[i], text);
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
