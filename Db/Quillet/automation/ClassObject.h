// Makes the objects of one class.
#pragma once

#include <atomic>

#include "Quillet/automation/LibraryApp.h"
#include "Quillet/automation/Module.h"

namespace quillet::automation {

// Keeps the library in use as long as it is referenced. May be used from any thread.
class ClassObject final : public IClassFactory {
public:
    // The entry must outlive the object.
    explicit ClassObject(const ClassEntry& entry) : m_entry(entry) {}
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override;
    // An outer object can only ask for the new object's IUnknown.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    ~ClassObject() = default;

    InUse m_inUse;
    const ClassEntry& m_entry;
    std::atomic<ULONG> m_references = 0;
};

}  // namespace quillet::automation
