// Acts within a scope as a user to whom file permissions apply.
#pragma once

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include <cstdlib>

namespace quillet::test {

#if defined(_WIN32)

// The read-only attribute applies to all users.
class AsOrdinaryUser {
public:
    AsOrdinaryUser() {}
    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

    bool IsBound() const { return true; }
};

#else

// Permissions do not apply to the superuser.
class AsOrdinaryUser {
public:
    AsOrdinaryUser() : m_switched(::geteuid() == 0 && ::seteuid(Nobody) == 0) {}
    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;
    ~AsOrdinaryUser() {
        if (m_switched && ::seteuid(0) != 0) {
            std::abort();
        }
    }

    bool IsBound() const { return ::geteuid() != 0; }

    static constexpr uid_t Nobody = 65534;

private:
    const bool m_switched;
};

#endif

}  // namespace quillet::test
