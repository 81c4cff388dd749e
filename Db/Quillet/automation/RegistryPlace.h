// Where classes are registered: for all users, or for the current one alone.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// As long as it lives, HKEY_CLASSES_ROOT is the part of all users where this process may write there, and the
// current user's own part where it may not. That holds for the whole process, the system's functions that
// register type libraries and proxies included.
class RegistryPlace {
public:
    RegistryPlace();
    // The current user's own part in any case where asked for. Both throw Failure where it can't be written.
    explicit RegistryPlace(bool ofCurrentUser);
    RegistryPlace(const RegistryPlace&) = delete;
    RegistryPlace& operator=(const RegistryPlace&) = delete;
    // A user's own part is left without the keys that would hold nothing any more.
    ~RegistryPlace();

    bool IsOfCurrentUser() const { return m_own != nullptr; }

private:
    HKEY m_own = nullptr;
};

}  // namespace quillet::automation
