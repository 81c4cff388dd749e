// The comparison of cells as an SQLite collation.
#pragma once

#include <Quillet/IQuillet.h>
#include <sqlite3.h>

#include <vector>

#include "Measure.h"

namespace bench {

class CellCollation {
public:
    // Registers the collation "cells" with a database, which must be closed before this object is destroyed.
    void AddTo(sqlite3* database) {
        Require(sqlite3_create_collation(database, "cells", SQLITE_UTF16, this, CompareBytes) == SQLITE_OK,
                "SQLite does not take the collation");
    }

    static quillet::WideView TextOf(const void* text, int bytes) {
        return {static_cast<const WCHAR*>(text), static_cast<std::size_t>(bytes) / sizeof(WCHAR)};
    }

private:
    // A value of each length, so that SQLite spends no time on creating strings.
    using ByLength = std::vector<quillet::CComVariant>;

    static int CompareBytes(void* self, int leftBytes, const void* left, int rightBytes, const void* right) {
        return static_cast<CellCollation*>(self)->Compare(TextOf(left, leftBytes), TextOf(right, rightBytes));
    }

    static const quillet::CComVariant& Set(ByLength& values, quillet::WideView text) {
        if (values.size() <= text.size()) {
            values.resize(text.size() + 1);
        }
        quillet::CComVariant& value = values[text.size()];
        if (value.vt != VT_BSTR) {
            value.SetText(text);
        } else {
            text.copy(value.bstrVal, text.size());
        }
        return value;
    }

    int Compare(quillet::WideView left, quillet::WideView right) {
        const quillet::CComVariant& leftValue = Set(m_left, left);
        const quillet::CComVariant& rightValue = Set(m_right, right);
        if (quillet::EqualIgnoringCase(leftValue, rightValue)) {
            return 0;
        }
        return leftValue > rightValue ? 1 : -1;
    }

    ByLength m_left;
    ByLength m_right;
};

}  // namespace bench
