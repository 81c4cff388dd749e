// The component module: the classes that it serves, and the locks that clients put on it.
#pragma once

#include <atomic>
#include <vector>

#include "Quillet/base/CComVariant.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// One class of the type library.
struct ClassEntry {
    CLSID m_id;
    // Whether clients make objects of it; others are handed out by their parents alone.
    bool m_isCreatable;
    // Makes an object, which may be part of another: null for one that stands alone.
    CComPtr<IUnknown> (*m_create)(IUnknown* outer);
    // What the registry calls it.
    const WCHAR* m_description;
    // With the version and without; null for a class that has none.
    const WCHAR* m_progId;
    const WCHAR* m_versionIndependentProgId;
};

// May be asked from any thread.
class Module {
public:
    static Module& Instance();

    const std::vector<ClassEntry>& Classes() const { return m_classes; }
    // An object that makes objects of a class. CLASS_E_CLASSNOTAVAILABLE for an unknown one, and for one of
    // which clients make none.
    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const;

    void Lock() { ++m_locks; }
    void Unlock() { --m_locks; }
    bool IsLocked() const { return m_locks != 0; }

private:
    Module();

    const std::vector<ClassEntry> m_classes;
    std::atomic<long> m_locks = 0;
};

}  // namespace quillet::automation
