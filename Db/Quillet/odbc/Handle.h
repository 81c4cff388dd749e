// One handle of the driver manager.
#pragma once

#include "Quillet/platform/Odbc.h"

namespace quillet::odbc {

// Owns an environment, a connection or a statement, and frees it.
class Handle {
public:
    Handle() = default;
    // A handle of the type that belongs to the parent, null for an environment. A failure is thrown as a
    // DatabaseError with the parent's diagnostics.
    Handle(SQLSMALLINT type, const Handle& parent);
    Handle(Handle&& other) noexcept;
    Handle& operator=(Handle&& other) noexcept;
    ~Handle() { Free(); }

    void Free();

    SQLSMALLINT Type() const { return m_type; }
    SQLHANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

private:
    SQLSMALLINT m_type = 0;
    SQLHANDLE m_handle = nullptr;
};

// A number where an attribute takes a pointer.
inline SQLPOINTER NumberAttribute(SQLULEN value) {
    return reinterpret_cast<SQLPOINTER>(value);
}

}  // namespace quillet::odbc
