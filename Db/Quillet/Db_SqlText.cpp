#include "Quillet/Db_SqlText.h"

#include <algorithm>

namespace quillet {

namespace {

constexpr WideView QuoteMarks = OLESTR("'\"\uFF91");

}  // namespace

CString WithoutBrackets(CString name) {
    if (!name.IsEmpty() && name[name.GetLength() - 1] == ']') {
        name = name.Left(name.GetLength() - 1);
    }
    if (!name.IsEmpty() && name[0] == '[') {
        name = name.Mid(1);
    }
    return name;
}

void LowerOutsideQuotes(CString& text) {
    const WideString source(text.View());
    CString result;
    std::size_t position = 0;
    while (position < source.size()) {
        const std::size_t open = std::min(source.find_first_of(QuoteMarks, position), source.size());
        result += Lowered(CString(WideView(source).substr(position, open - position)));
        if (open == source.size()) {
            break;
        }
        const std::size_t close = source.find(source[open], open + 1);
        const std::size_t end = close == WideString::npos ? source.size() : close + 1;
        result += CString(WideView(source).substr(open, end - open));
        position = end;
    }
    text = result;
}

}  // namespace quillet
