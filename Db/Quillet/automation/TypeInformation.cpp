#include "Quillet/automation/TypeInformation.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "Quillet/automation/LibraryApp.h"
#include "Quillet/automation/MethodFailure.h"

namespace quillet::automation {

namespace {

struct Known {
    std::mutex m_mutex;
    std::vector<std::pair<IID, std::shared_ptr<const TypeInformation>>> m_all;
};

// Never destroyed: when the process ends, the system's part of it may already be gone.
Known& AllKnown() {
    static Known* const known = new Known;
    return *known;
}

// The enumerations of the type library are passed as longs.
VARTYPE SimpleType(VARTYPE type) {
    return type == VT_USERDEFINED ? static_cast<VARTYPE>(VT_I4) : type;
}

Parameter ParameterOf(const TYPEDESC& type) {
    if (type.vt == VT_PTR) {
        return {SimpleType(type.lptdesc->vt), true};
    }
    return {SimpleType(type.vt), false};
}

Member MemberOf(const FUNCDESC& function) {
    Member member{function.memid, function.invkind, {}};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0) {
            member.m_parameters.push_back(ParameterOf(parameter.tdesc));
        }
    }
    return member;
}

UINT CountFunctions(ITypeInfo& information) {
    TYPEATTR* attributes = nullptr;
    Check(information.GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    information.ReleaseTypeAttr(attributes);
    return count;
}

}  // namespace

TypeInformation::TypeInformation(CComPtr<ITypeInfo> information) : m_information(std::move(information)) {
    const UINT count = CountFunctions(*m_information.Get());
    m_members.reserve(count);
    for (UINT i = 0; i < count; ++i) {
        FUNCDESC* function = nullptr;
        Check(m_information->GetFuncDesc(i, &function));
        m_members.push_back(MemberOf(*function));
        m_information->ReleaseFuncDesc(function);
    }
}

std::shared_ptr<const TypeInformation> TypeInformation::Of(REFIID interfaceId) {
    Known& known = AllKnown();
    const std::lock_guard<std::mutex> lock(known.m_mutex);
    const auto found = std::find_if(known.m_all.begin(), known.m_all.end(),
                                    [&](const auto& entry) { return IsEqualGUID(entry.first, interfaceId); });
    if (found != known.m_all.end()) {
        return found->second;
    }
    ITypeInfo* information = nullptr;
    Check(OwnTypeLibrary()->GetTypeInfoOfGuid(interfaceId, &information));
    CComPtr<ITypeInfo> owned;
    owned.Attach(information);
    known.m_all.emplace_back(interfaceId, std::make_shared<TypeInformation>(std::move(owned)));
    return known.m_all.back().second;
}

void TypeInformation::ForgetAll() {
    Known& known = AllKnown();
    const std::lock_guard<std::mutex> lock(known.m_mutex);
    known.m_all.clear();
}

const Member* TypeInformation::Find(DISPID id, WORD flags) const {
    const auto found = std::find_if(m_members.begin(), m_members.end(), [&](const Member& member) {
        return member.m_id == id && (static_cast<unsigned>(member.m_kind) & flags) != 0;
    });
    return found == m_members.end() ? nullptr : &*found;
}

CComPtr<ITypeLib> OwnTypeLibrary() {
    ITypeLib* library = nullptr;
    Check(LoadTypeLibEx(App().Path().GetString(), REGKIND_NONE, &library));
    CComPtr<ITypeLib> owned;
    owned.Attach(library);
    return owned;
}

}  // namespace quillet::automation
