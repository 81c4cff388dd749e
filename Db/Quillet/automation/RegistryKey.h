// One key of the registry.
#pragma once

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

class RegistryKey {
public:
    // Opens the key, or creates it. Throws MethodFailure.
    RegistryKey(HKEY parent, const CString& path);
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey();

    HKEY Get() const { return m_key; }
    // The value without a name, or a named one. Throws MethodFailure.
    void SetText(const CString& text) const { SetText(CString(), text); }
    void SetText(const CString& name, const CString& text) const;

    // Deletes a key and everything below it, if it exists. Throws MethodFailure.
    static void Delete(HKEY parent, const CString& path);
    // Deletes a key that has neither values nor keys below it; leaves any other.
    static void DeleteEmpty(HKEY parent, const CString& path);

private:
    HKEY m_key = nullptr;
};

}  // namespace quillet::automation
