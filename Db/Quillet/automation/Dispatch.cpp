#include "Quillet/automation/Dispatch.h"

#include <algorithm>

namespace quillet::automation {

HRESULT GiveTypeInfo(REFIID interfaceId, UINT index, ITypeInfo** information) noexcept {
    return Guarded(interfaceId, [&] {
        Require(information);
        *information = nullptr;
        if (index != 0) {
            throw MethodFailure{DISP_E_BADINDEX, "There is one type information"};
        }
        Store(*information, TypeInformation::Of(interfaceId)->Get());
    });
}

HRESULT IdsOfNames(REFIID interfaceId, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept {
    if (!IsEqualGUID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (names == nullptr || ids == nullptr || count == 0 || std::count(names, names + count, nullptr) != 0) {
        return E_INVALIDARG;
    }
    HRESULT found = S_OK;
    const HRESULT known = Guarded(interfaceId, [&] {
        found = TypeInformation::Of(interfaceId)->Get()->GetIDsOfNames(names, count, ids);
    });
    return FAILED(known) ? known : found;
}

HRESULT InvokeMember(REFIID interfaceId, void* object, DISPID member, REFIID reserved, WORD flags,
                     DISPPARAMS* given, VARIANT* result, EXCEPINFO* exception, UINT* wrong) noexcept {
    if (!IsEqualGUID(reserved, IID_NULL)) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (given == nullptr) {
        return E_INVALIDARG;
    }
    HRESULT answered = S_OK;
    const HRESULT prepared = Guarded(interfaceId, [&] {
        // A value is set in the same way whether or not it is an object.
        const WORD meant =
            (flags & DISPATCH_PROPERTYPUTREF) != 0 ? static_cast<WORD>(DISPATCH_PROPERTYPUT) : flags;
        const auto information = TypeInformation::Of(interfaceId);
        const Member* const called = information->Find(member, meant);
        if (called == nullptr) {
            answered = DISP_E_MEMBERNOTFOUND;
            return;
        }
        InvokeArguments arguments(*called, *given);
        UINT position = 0;
        answered = arguments.Convert(position);
        if (FAILED(answered)) {
            if (wrong != nullptr) {
                *wrong = position;
            }
            return;
        }
        answered = information->Get()->Invoke(object, member, static_cast<WORD>(called->m_kind),
                                              &arguments.Get(), result, exception, wrong);
        if (SUCCEEDED(answered)) {
            arguments.WriteBack();
        }
    });
    return FAILED(prepared) ? prepared : answered;
}

}  // namespace quillet::automation
