// Calls by name, answered by the type library.
#pragma once

#include "Quillet/automation/ComObject.h"
#include "Quillet/automation/InvokeArguments.h"
#include "Quillet/automation/TypeInformation.h"

namespace quillet::automation {

// The same for every interface; the object is a pointer to the interface that the information describes.
HRESULT GiveTypeInfo(REFIID interfaceId, UINT index, ITypeInfo** information) noexcept;
HRESULT IdsOfNames(REFIID interfaceId, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
HRESULT InvokeMember(REFIID interfaceId, void* object, DISPID member, REFIID reserved, WORD flags,
                     DISPPARAMS* given, VARIANT* result, EXCEPINFO* exception, UINT* wrong) noexcept;

template <typename Interface>
class Dispatch : public ComObject<Interface> {
public:
    using ComObject<Interface>::ComObject;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** information) override {
        return GiveTypeInfo(__uuidof(Interface), index, information);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        return IdsOfNames(__uuidof(Interface), reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags, DISPPARAMS* given,
                                     VARIANT* result, EXCEPINFO* exception, UINT* wrong) override {
        return InvokeMember(__uuidof(Interface), static_cast<Interface*>(this), member, reserved, flags,
                            given, result, exception, wrong);
    }
};

}  // namespace quillet::automation
