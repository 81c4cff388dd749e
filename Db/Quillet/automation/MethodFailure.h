// How a method fails: by an exception inside, by a result code and error information outside.
#pragma once

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// Ends a method with a result and a message for the caller.
struct MethodFailure {
    HRESULT m_result;
    CString m_message;
};

// Must be called while an exception is being handled. Returns the result for the caller; the message becomes
// the thread's error information, on behalf of the interface. Exceptions thrown by pointer are deleted.
HRESULT ResultOfException(REFIID interfaceId) noexcept;

// Calls the body and lets no exception out. Returns S_OK, or the result of what it threw.
template <typename Body>
HRESULT Guarded(REFIID interfaceId, Body body) noexcept {
    try {
        body();
        return S_OK;
    } catch (...) {
        return ResultOfException(interfaceId);
    }
}

// Throws MethodFailure if the result is a failure.
void Check(HRESULT result);

}  // namespace quillet::automation
