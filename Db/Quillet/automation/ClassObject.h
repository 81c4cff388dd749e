// Makes the objects of one class.
#pragma once

#include <atomic>

#include "Quillet/automation/LibraryApp.h"
#include "Quillet/automation/Module.h"

namespace quillet::automation {

// Keeps the library in use as long as somebody holds it. May be used from any thread.
class ClassObject final : public IClassFactory {
public:
    // The entry outlives the object.
    explicit ClassObject(const ClassEntry& entry) : m_entry(entry) {}
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override;
    // An outer object gets the new one by its unknown, and by nothing else.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    ~ClassObject() = default;

    InUse m_inUse;
    const ClassEntry& m_entry;
    std::atomic<ULONG> m_references = 0;
};

}  // namespace quillet::automation
