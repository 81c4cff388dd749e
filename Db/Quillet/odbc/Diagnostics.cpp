#include "Quillet/odbc/Diagnostics.h"

#include <algorithm>
#include <iterator>

namespace quillet::odbc {

DatabaseError DiagnosticsOf(const Handle& handle) {
    CString state;
    CString text;
    SQLSMALLINT record = 1;
    for (; handle; ++record) {
        SQLWCHAR recordState[SQL_SQLSTATE_SIZE + 1] = {};
        SQLWCHAR recordText[SQL_MAX_MESSAGE_LENGTH] = {};
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        if (!SQL_SUCCEEDED(SQLGetDiagRecW(handle.Type(), handle.Get(), record, recordState, &native,
                                          recordText, static_cast<SQLSMALLINT>(std::size(recordText)),
                                          &length))) {
            break;
        }
        CString line = CString(WideView(recordText)).Trim();
        if (record == 1) {
            state = CString(WideView(recordState));
            text = line;
        } else if (!line.IsEmpty()) {
            text += "\n" + line;
        }
    }
    if (text.IsEmpty()) {
        text = "The database driver failed and gave no reason.";
    }
    return {state, text};
}

void ThrowDiagnostics(const Handle& handle) {
    throw new DatabaseError(DiagnosticsOf(handle));
}

}  // namespace quillet::odbc
