// Aggregation: automation objects as parts of another object.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet::test {

// An object with one of the library's as its part. It counts the references to both, but does not own the
// part.
class OuterObject final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualGUID(id, IID_IUnknown)) {
            *object = static_cast<IUnknown*>(this);
            AddRef();
            return S_OK;
        }
        return m_inner == nullptr ? E_NOINTERFACE : m_inner->QueryInterface(id, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }

    IUnknown* m_inner = nullptr;
    ULONG m_references = 0;
};

}  // namespace quillet::test
