#include "Quillet/automation/Registration.h"

#include <array>
#include <utility>

#include "Quillet/automation/MethodFailure.h"
#include "Quillet/automation/RegistryKey.h"
#include "Quillet/automation/TypeInformation.h"

namespace quillet::automation {

namespace {

CString TextOf(REFGUID id) {
    constexpr std::size_t Length = 39;
    std::array<WCHAR, Length> text{};
    StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
    return CString(text.data());
}

CString KeyOf(const ClassEntry& entry) {
    return "CLSID\\" + TextOf(entry.m_id);
}

void RegisterName(const CString& name, const ClassEntry& entry) {
    const RegistryKey key(HKEY_CLASSES_ROOT, name);
    key.SetText(entry.m_description);
    RegistryKey(key.Get(), "CLSID").SetText(TextOf(entry.m_id));
}

// A type library as the registry knows it: by its attributes.
class LibraryAttributes {
public:
    explicit LibraryAttributes(CComPtr<ITypeLib> library) : m_library(std::move(library)) {
        Check(m_library->GetLibAttr(&m_attributes));
    }
    LibraryAttributes(const LibraryAttributes&) = delete;
    LibraryAttributes& operator=(const LibraryAttributes&) = delete;
    ~LibraryAttributes() { m_library->ReleaseTLibAttr(m_attributes); }

    const TLIBATTR* operator->() const { return m_attributes; }

private:
    CComPtr<ITypeLib> m_library;
    TLIBATTR* m_attributes = nullptr;
};

}  // namespace

Registration::Registration(CString serverPath, const std::vector<ClassEntry>& classes)
    : m_serverPath(std::move(serverPath)), m_classes(classes) {
}

void Registration::Register() const {
    for (const ClassEntry& entry : m_classes) {
        RegisterClass(entry);
    }
    // The system takes the path without const but only reads it.
    Check(RegisterTypeLib(OwnTypeLibrary().Get(), const_cast<LPOLESTR>(m_serverPath.GetString()), nullptr));
}

void Registration::RegisterClass(const ClassEntry& entry) const {
    const RegistryKey key(HKEY_CLASSES_ROOT, KeyOf(entry));
    key.SetText(entry.m_description);
    const RegistryKey server(key.Get(), "InprocServer32");
    server.SetText(m_serverPath);
    server.SetText("ThreadingModel", "both");
    if (entry.m_progId != nullptr) {
        RegistryKey(key.Get(), "ProgID").SetText(entry.m_progId);
        RegistryKey(key.Get(), "VersionIndependentProgID").SetText(entry.m_versionIndependentProgId);
        RegisterName(entry.m_progId, entry);
        RegisterName(entry.m_versionIndependentProgId, entry);
    }
}

void Registration::Unregister() const {
    for (const ClassEntry& entry : m_classes) {
        RegistryKey::Delete(HKEY_CLASSES_ROOT, KeyOf(entry));
        if (entry.m_progId != nullptr) {
            RegistryKey::Delete(HKEY_CLASSES_ROOT, entry.m_progId);
            RegistryKey::Delete(HKEY_CLASSES_ROOT, entry.m_versionIndependentProgId);
        }
    }
    const LibraryAttributes library(OwnTypeLibrary());
    const HRESULT removed = UnRegisterTypeLib(library->guid, library->wMajorVerNum, library->wMinorVerNum,
                                              library->lcid, library->syskind);
    if (removed != TYPE_E_REGISTRYACCESS && removed != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) {
        Check(removed);
    }
}

}  // namespace quillet::automation
