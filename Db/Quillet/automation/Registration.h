// What the registry says of the classes and of the type library.
#pragma once

#include <vector>

#include "Quillet/automation/Module.h"
#include "Quillet/base/CString.h"

namespace quillet::automation {

// Written to HKEY_CLASSES_ROOT: for each class under its identifier the server's path, the threading model
// "both" and its ProgIDs, and under each ProgID the class. All throw MethodFailure.
class Registration {
public:
    // The classes must outlive the object.
    Registration(CString serverPath, const std::vector<ClassEntry>& classes);

    void Register() const;
    // Removes what Register writes, to the last key. None of it need exist.
    void Unregister() const;

private:
    void RegisterClass(const ClassEntry& entry) const;

    CString m_serverPath;
    const std::vector<ClassEntry>& m_classes;
};

}  // namespace quillet::automation
