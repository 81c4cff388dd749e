#include "Quillet/odbc/DatabaseError.h"

#include <algorithm>
#include <utility>

namespace quillet::odbc {

const CRuntimeClass DatabaseError::classDatabaseError{"DatabaseError", &CException::classCException};

DatabaseError::DatabaseError(CString state, CString text)
    : m_state(std::move(state)), m_text(std::move(text)) {
}

DatabaseError::DatabaseError(const DatabaseError& other) = default;
DatabaseError::~DatabaseError() = default;

const CRuntimeClass* DatabaseError::GetRuntimeClass() const {
    return &classDatabaseError;
}

int DatabaseError::GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0;
    }
    if (buffer == nullptr || capacity == 0) {
        return 0;
    }
    const WideView text = m_text.View();
    const std::size_t length = std::min<std::size_t>(text.size(), capacity - 1);
    std::copy_n(text.data(), length, buffer);
    buffer[length] = 0;
    return 1;
}

}  // namespace quillet::odbc
