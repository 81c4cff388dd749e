// Where classes are registered: for all users, or for the current one alone.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// As long as it lives, HKEY_CLASSES_ROOT is the part for all users if this process may write there, or else
// the current user's own part. That holds for the whole process, including the system's functions that
// register type libraries and proxies.
class RegistryPlace {
public:
    RegistryPlace();
    // With ofCurrentUser, always the current user's own part. Both throw MethodFailure if that can't be
    // written.
    explicit RegistryPlace(bool ofCurrentUser);
    RegistryPlace(const RegistryPlace&) = delete;
    RegistryPlace& operator=(const RegistryPlace&) = delete;
    // Deletes the keys of a user's own part that have become empty.
    ~RegistryPlace();

    bool IsOfCurrentUser() const { return m_own != nullptr; }

private:
    HKEY m_own = nullptr;
};

}  // namespace quillet::automation
