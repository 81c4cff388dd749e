// Which table a client means: by its name, or by its index.
#pragma once

#include <cstdint>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"

namespace quillet::automation {

class TableKey {
public:
    // A string is a name, a number of any type an index. Throws MethodFailure for anything else.
    explicit TableKey(const VARIANT& given);

    bool IsName() const { return m_value.vt == VT_BSTR; }
    CString Name() const { return CString(m_value.Text()); }
    std::int64_t Index() const { return m_value.lVal; }

private:
    CComVariant m_value;
};

}  // namespace quillet::automation
