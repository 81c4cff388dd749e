// The one exception that the library itself raises.
#pragma once

#include "Quillet/base/CException.h"
#include "Quillet/base/CString.h"

// Thrown by pointer; the catcher deletes it. It can be caught as quillet::CException too.
class QUILLET_API DbException : public quillet::CException {
public:
    DbException();
    // The message as given.
    explicit DbException(quillet::CString message);
    // A report of the throwing module, the line and the message:
    // "Quillet exception thrown\r\nFile: <file> @ <line>\r\nMessage: <message>".
    DbException(const char* file, int line, quillet::CString message);
    DbException(const DbException& other);
    DbException& operator=(const DbException& other) = delete;
    ~DbException() override;

    // The whole stored text.
    const quillet::CString& Message() const { return m_message; }

    using quillet::CException::GetErrorMessage;
    // Copies the stored text, cut to capacity - 1 characters, and terminates it; buffer[capacity - 1] is a
    // zero in any case. Always returns 1. Throws quillet::CInvalidArgException, by pointer, for a null buffer
    // or a capacity of 0.
    int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const override;

private:
    quillet::CString m_message;
};
