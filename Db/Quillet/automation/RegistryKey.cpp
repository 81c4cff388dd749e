#include "Quillet/automation/RegistryKey.h"

#include "Quillet/automation/MethodFailure.h"

namespace quillet::automation {

namespace {

void CheckStatus(LSTATUS status) {
    Check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

}  // namespace

RegistryKey::RegistryKey(HKEY parent, const CString& path) {
    CheckStatus(RegCreateKeyExW(parent, path.GetString(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                                &m_key, nullptr));
}

RegistryKey::~RegistryKey() {
    RegCloseKey(m_key);
}

void RegistryKey::SetText(const CString& name, const CString& text) const {
    const WideView view = text.View();
    // Including the terminator.
    const std::size_t bytes = (view.size() + 1) * sizeof(WCHAR);
    CheckStatus(RegSetValueExW(m_key, name.GetString(), 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.GetString()), static_cast<DWORD>(bytes)));
}

void RegistryKey::Delete(HKEY parent, const CString& path) {
    const LSTATUS status = RegDeleteTreeW(parent, path.GetString());
    if (status != ERROR_FILE_NOT_FOUND) {
        CheckStatus(status);
    }
}

void RegistryKey::DeleteEmpty(HKEY parent, const CString& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, path.GetString(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return;
    }
    DWORD keys = 0;
    DWORD values = 0;
    const LSTATUS counted = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                                             nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(key);
    if (counted == ERROR_SUCCESS && keys == 0 && values == 0) {
        RegDeleteKeyW(parent, path.GetString());
    }
}

}  // namespace quillet::automation
