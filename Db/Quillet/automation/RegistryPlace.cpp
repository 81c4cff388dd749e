#include "Quillet/automation/RegistryPlace.h"

#include "Quillet/automation/MethodFailure.h"
#include "Quillet/automation/RegistryKey.h"

namespace quillet::automation {

namespace {

constexpr const WCHAR* Classes = OLESTR("Software\\Classes");

bool MayWriteForAll() {
    HKEY key = nullptr;
    const bool may =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, Classes, 0, KEY_READ | KEY_WRITE, &key) == ERROR_SUCCESS;
    if (may) {
        RegCloseKey(key);
    }
    return may;
}

// Windows registers type libraries for all users, wherever that key leads, unless this function was called. A
// system without the function follows the key.
void EnableOwnTypeLibraries() {
    const FARPROC enable =
        GetProcAddress(GetModuleHandleW(OLESTR("oleaut32.dll")), "OaEnablePerUserTLibRegistration");
    if (enable != nullptr) {
        reinterpret_cast<void(WINAPI*)()>(reinterpret_cast<void*>(enable))();
    }
}

}  // namespace

RegistryPlace::RegistryPlace() : RegistryPlace(!MayWriteForAll()) {
}

RegistryPlace::RegistryPlace(bool ofCurrentUser) {
    if (!ofCurrentUser) {
        return;
    }
    Check(HRESULT_FROM_WIN32(static_cast<DWORD>(RegCreateKeyExW(
        HKEY_CURRENT_USER, Classes, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &m_own, nullptr))));
    const LSTATUS redirected = RegOverridePredefKey(HKEY_CLASSES_ROOT, m_own);
    if (redirected != ERROR_SUCCESS) {
        RegCloseKey(m_own);
        Check(HRESULT_FROM_WIN32(static_cast<DWORD>(redirected)));
    }
    EnableOwnTypeLibraries();
}

RegistryPlace::~RegistryPlace() {
    if (m_own == nullptr) {
        return;
    }
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    for (const char* const name : {"CLSID", "Interface", "TypeLib"}) {
        RegistryKey::DeleteEmpty(m_own, name);
    }
    RegCloseKey(m_own);
    RegistryKey::DeleteEmpty(HKEY_CURRENT_USER, Classes);
}

}  // namespace quillet::automation
