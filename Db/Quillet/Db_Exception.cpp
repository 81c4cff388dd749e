#include "Quillet/Db_Exception.h"

#include <algorithm>

DbException::DbException() = default;

DbException::DbException(quillet::CString message) : m_message(std::move(message)) {
}

DbException::DbException(const char* file, int line, quillet::CString message) {
    m_message.Format("Quillet exception thrown\r\nFile: %s @ %d\r\nMessage: %s", file == nullptr ? "" : file,
                     line, message.ToUtf8().c_str());
}

DbException::DbException(const DbException& other) : quillet::CException(), m_message(other.m_message) {
}

DbException::~DbException() = default;

int DbException::GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0;
    }
    if (buffer == nullptr || capacity == 0) {
        throw new quillet::CInvalidArgException;
    }
    const quillet::WideView message = m_message.View();
    const std::size_t length = std::min<std::size_t>(message.size(), capacity - 1);
    std::copy_n(message.data(), length, buffer);
    buffer[length] = 0;
    buffer[capacity - 1] = 0;
    return 1;
}
