// What all automation objects share: counted references, aggregation, guarded methods.
#pragma once

#include "Quillet/automation/IQuillet.h"
#include "Quillet/automation/LibraryApp.h"
#include "Quillet/automation/MethodFailure.h"
#include "Quillet/automation/Results.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// An object with one interface of the type library. It lives as long as there are references to it and counts
// them without locks: it is used from one thread, or through proxies. As part of an outer object it leaves
// counting and identity to that one, which holds it by Own.
template <typename Interface>
class ComObject : public Interface, public ISupportErrorInfo {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        return m_outer->QueryInterface(id, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_outer->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_outer->Release(); }

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) override {
        return IsEqualGUID(id, __uuidof(Interface)) ? S_OK : S_FALSE;
    }

    // The object itself, whether or not it is part of another.
    IUnknown* Own() { return &m_own; }

protected:
    // The outer object is null unless this one is part of it. There are no references yet.
    explicit ComObject(IUnknown* outer) : m_own(*this), m_outer(outer == nullptr ? &m_own : outer) {}
    virtual ~ComObject() = default;

    // A method without a result. An exception of the body becomes the caller's failure.
    template <typename Body>
    static HRESULT Do(Body body) noexcept {
        return Guarded(__uuidof(Interface), body);
    }

    // A method whose result the body gives. The result is empty if the method fails.
    template <typename Out, typename Body>
    static HRESULT Give(Out* result, Body body) noexcept {
        return Do([&] {
            Require(result);
            *result = Out();
            Store(*result, body());
        });
    }

private:
    class OwnUnknown final : public IUnknown {
    public:
        explicit OwnUnknown(ComObject& object) : m_object(object) {}

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
            if (object == nullptr) {
                return E_POINTER;
            }
            IUnknown* const found = m_object.InterfaceOf(id);
            *object = found;
            if (found == nullptr) {
                return E_NOINTERFACE;
            }
            found->AddRef();
            return S_OK;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
        ULONG STDMETHODCALLTYPE Release() override {
            const ULONG left = --m_references;
            if (left == 0) {
                delete &m_object;
            }
            return left;
        }

    private:
        ComObject& m_object;
        ULONG m_references = 0;
    };

    // Null for an interface that the object does not have.
    IUnknown* InterfaceOf(REFIID id) {
        if (IsEqualGUID(id, IID_IUnknown)) {
            return &m_own;
        }
        if (IsEqualGUID(id, __uuidof(Interface)) || IsEqualGUID(id, IID_IDispatch)) {
            return static_cast<Interface*>(this);
        }
        if (IsEqualGUID(id, IID_ISupportErrorInfo)) {
            return static_cast<ISupportErrorInfo*>(this);
        }
        return nullptr;
    }

    InUse m_inUse;
    OwnUnknown m_own;
    IUnknown* const m_outer;
};

}  // namespace quillet::automation
