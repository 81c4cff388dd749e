// What a driver or the driver manager refused.
#pragma once

#include "Quillet/base/CException.h"
#include "Quillet/base/CString.h"

namespace quillet::odbc {

// Thrown by pointer; the catcher deletes it.
class QUILLET_API DatabaseError : public CException {
public:
    static const CRuntimeClass classDatabaseError;

    // The state is the five characters of SQLSTATE, the text what the driver said.
    DatabaseError(CString state, CString text);
    DatabaseError(const DatabaseError& other);
    DatabaseError& operator=(const DatabaseError& other) = delete;
    ~DatabaseError() override;

    const CString& State() const { return m_state; }
    const CString& Text() const { return m_text; }

    const CRuntimeClass* GetRuntimeClass() const override;

    using CException::GetErrorMessage;
    // Copies the text, cut to capacity - 1 characters. Returns 1, or 0 if the buffer has no room.
    int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const override;

private:
    CString m_state;
    CString m_text;
};

}  // namespace quillet::odbc
