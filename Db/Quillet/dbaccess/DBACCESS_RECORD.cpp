#include "Quillet/dbaccess/DBACCESS_RECORD.h"

#include <algorithm>

#include "Quillet/base/OutOfRange.h"

using quillet::CString;
using quillet::WideView;

namespace {

bool AnswersTo(WideView columnName, WideView name) {
    while (columnName != name) {
        const std::size_t dot = columnName.find(WCHAR('.'));
        if (dot == WideView::npos || dot + 1 == columnName.size()) {
            return false;
        }
        columnName.remove_prefix(dot + 1);
    }
    return true;
}

}  // namespace

DBACCESS_RECORD::~DBACCESS_RECORD() = default;

DBACCESS_COLUMN& DBACCESS_RECORD::operator[](int position) {
    const auto index = static_cast<std::size_t>(position);
    return index < size() ? *(begin() + position) : quillet::OutOfRange<DBACCESS_COLUMN>();
}

const DBACCESS_COLUMN& DBACCESS_RECORD::operator[](int position) const {
    const auto index = static_cast<std::size_t>(position);
    return index < size() ? *(begin() + position) : quillet::OutOfRange<DBACCESS_COLUMN>();
}

DBACCESS_COLUMN& DBACCESS_RECORD::operator[](const CString& name) {
    const int position = findIdx(name);
    return position < 0 ? emplace_back(name) : (*this)[position];
}

int DBACCESS_RECORD::findIdx(const CString& name) const {
    const WideView wanted = name.View();
    int position = 0;
    for (const DBACCESS_COLUMN& column : *this) {
        if (AnswersTo(column.m_name.View(), wanted)) {
            return position;
        }
        ++position;
    }
    return -1;
}

DBACCESS_COLUMN& DBACCESS_RECORD::find(const CString& name) {
    static DBACCESS_COLUMN missing;
    const int position = findIdx(name);
    return position < 0 ? missing : (*this)[position];
}

const DBACCESS_COLUMN& DBACCESS_RECORD::find(const CString& name) const {
    static DBACCESS_COLUMN missing;
    const int position = findIdx(name);
    return position < 0 ? missing : (*this)[position];
}

float DBACCESS_RECORD::GetFloatEx(const CString& name, const CString& fallbackName) const {
    int position = findIdx(name);
    if (position < 0) {
        position = findIdx(fallbackName);
    }
    return position < 0 ? 0.0F : (*this)[position].m_float;
}

IDbParamValues& DBACCESS_RECORD::SetParam(const WCHAR* name, double value) {
    (*this)[name] = value;
    return *this;
}

bool DBACCESS_RECORD::GetParam(const WCHAR* name, double& value) {
    const int position = findIdx(name);
    if (position < 0) {
        return false;
    }
    value = (*this)[position].m_double;
    return true;
}

bool DBACCESS_RECORD::operator==(const DBACCESS_RECORD& other) const {
    return size() >= other.size() && std::equal(other.begin(), other.end(), begin(),
                                                [](const DBACCESS_COLUMN& theirs,
                                                   const DBACCESS_COLUMN& ours) { return ours == theirs; });
}
