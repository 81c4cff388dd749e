// The classes come last in this subsystem: this file knows all of them.
#include "Quillet/automation/Module.h"

#include <algorithm>

#include "Quillet/automation/CDbDatabase.h"
#include "Quillet/automation/ClassObject.h"
#include "Quillet/automation/MethodFailure.h"

namespace quillet::automation {

namespace {

template <typename Object>
CComPtr<IUnknown> Make(IUnknown* outer) {
    return CComPtr<IUnknown>((new Object(outer))->Own());
}

std::vector<ClassEntry> AllClasses() {
    return {
        {__uuidof(DbDatabase), true, Make<CDbDatabase>, OLESTR("DbDatabase Class"),
         OLESTR("IQuillet.DbDatabase.1"), OLESTR("IQuillet.DbDatabase")},
        {__uuidof(DbSource), false, Make<CDbSource>, OLESTR("DbSource Class"), OLESTR("IQuillet.DbSource.1"),
         OLESTR("IQuillet.DbSource")},
        {__uuidof(DbTableDescr), false, Make<CDbTableDescr>, OLESTR("DbTableDescr Class"),
         OLESTR("IQuillet.DbTableDescr.1"), OLESTR("IQuillet.DbTableDescr")},
        {__uuidof(DbTableData), false, Make<CDbTableData>, OLESTR("DbTableData Class"),
         OLESTR("IQuillet.DbTableData.1"), OLESTR("IQuillet.DbTableData")},
        {__uuidof(DbFieldDescr), false, Make<CDbFieldDescr>, OLESTR("DbFieldDescr Class"),
         OLESTR("IQuillet.DbFieldDescr.1"), OLESTR("IQuillet.DbFieldDescr")},
        {__uuidof(DbFieldValue), false, Make<CDbFieldValue>, OLESTR("DbFieldValue Class"),
         OLESTR("IQuillet.DbFieldValue.1"), OLESTR("IQuillet.DbFieldValue")},
        // Its version differs from that of the others.
        {__uuidof(DbTableRow), true, Make<CDbTableRow>, OLESTR("DbTableRow Class"),
         OLESTR("IQuillet.DbTableRow.11"), OLESTR("IQuillet.DbTableRow")},
        {__uuidof(DbHeader), true, Make<CDbHeader>, OLESTR("DbHeader Class"), OLESTR("IQuillet.DbHeader.1"),
         OLESTR("IQuillet.DbHeader")},
        {__uuidof(DbProperties), true, Make<CDbProperties>, OLESTR("DbProperties Class"),
         OLESTR("IQuillet.DbProperties.1"), OLESTR("IQuillet.DbProperties")},
        {__uuidof(DbTableInfo), true, Make<CDbTableInfo>, OLESTR("DbTableInfo Class"), nullptr, nullptr},
    };
}

}  // namespace

Module::Module() : m_classes(AllClasses()) {
}

Module& Module::Instance() {
    static Module module;
    return module;
}

HRESULT Module::GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const {
    *object = nullptr;
    const auto found = std::find_if(m_classes.begin(), m_classes.end(), [&](const ClassEntry& entry) {
        return IsEqualGUID(entry.m_id, classId);
    });
    if (found == m_classes.end() || !found->m_isCreatable) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    const CComPtr<ClassObject> made(new ClassObject(*found));
    return made->QueryInterface(interfaceId, object);
}

}  // namespace quillet::automation
