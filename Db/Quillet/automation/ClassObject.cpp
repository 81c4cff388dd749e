#include "Quillet/automation/ClassObject.h"

#include "Quillet/automation/MethodFailure.h"

namespace quillet::automation {

HRESULT ClassObject::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (!IsEqualGUID(id, IID_IUnknown) && !IsEqualGUID(id, IID_IClassFactory)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
}

ULONG ClassObject::Release() {
    const ULONG left = --m_references;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ClassObject::CreateInstance(IUnknown* outer, REFIID id, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr && !IsEqualGUID(id, IID_IUnknown)) {
        return CLASS_E_NOAGGREGATION;
    }
    return Guarded(IID_IClassFactory, [&] { Check(m_entry.m_create(outer)->QueryInterface(id, object)); });
}

HRESULT ClassObject::LockServer(BOOL lock) {
    if (lock != FALSE) {
        Module::Instance().Lock();
    } else {
        Module::Instance().Unlock();
    }
    return S_OK;
}

}  // namespace quillet::automation
