#include "Quillet/odbc/Handle.h"

#include <utility>

#include "Quillet/odbc/Diagnostics.h"

namespace quillet::odbc {

Handle::Handle(SQLSMALLINT type, const Handle& parent) : m_type(type) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent.Get(), &m_handle))) {
        m_handle = nullptr;
        ThrowDiagnostics(parent);
    }
}

Handle::Handle(Handle&& other) noexcept
    : m_type(other.m_type), m_handle(std::exchange(other.m_handle, nullptr)) {
}

Handle& Handle::operator=(Handle&& other) noexcept {
    std::swap(m_type, other.m_type);
    std::swap(m_handle, other.m_handle);
    return *this;
}

void Handle::Free() {
    if (m_handle != nullptr) {
        SQLFreeHandle(m_type, std::exchange(m_handle, nullptr));
    }
}

}  // namespace quillet::odbc
