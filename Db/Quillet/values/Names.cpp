#include "Quillet/values/Names.h"

namespace quillet {

namespace {

bool IsQuoteMark(WCHAR unit) {
    return QuoteMarks.find(unit) != WideView::npos;
}

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

CString WithoutQuotes(const CString& text) {
    WideView view = text.View();
    if (!view.empty() && IsQuoteMark(view.front())) {
        view.remove_prefix(1);
    }
    if (!view.empty() && IsQuoteMark(view.back())) {
        view.remove_suffix(1);
    }
    return CString(view);
}

}  // namespace quillet
