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
    // Whether clients can create objects of it; others are only handed out by their parents.
    bool m_isCreatable;
    // Creates an object, which may be part of an outer one; outer is null if it is not.
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
    // The object that creates objects of a class. CLASS_E_CLASSNOTAVAILABLE for an unknown class, and for one
    // that clients can't create.
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
