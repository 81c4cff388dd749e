#include "Quillet/automation/MethodFailure.h"

#include <array>
#include <exception>
#include <memory>
#include <new>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CException.h"

namespace quillet::automation {

namespace {

// What the thread's error information names as its source.
constexpr const WCHAR* Source = OLESTR("IQuillet");

HRESULT Report(REFIID interfaceId, HRESULT result, const CString& message) {
    ICreateErrorInfo* made = nullptr;
    if (FAILED(CreateErrorInfo(&made))) {
        return result;
    }
    CComPtr<ICreateErrorInfo> information;
    information.Attach(made);
    // The system takes its texts without const but only reads them.
    information->SetGUID(interfaceId);
    information->SetSource(const_cast<LPOLESTR>(Source));
    information->SetDescription(const_cast<LPOLESTR>(message.GetString()));
    void* error = nullptr;
    if (SUCCEEDED(information->QueryInterface(IID_IErrorInfo, &error))) {
        CComPtr<IErrorInfo> reported;
        reported.Attach(static_cast<IErrorInfo*>(error));
        SetErrorInfo(0, reported.Get());
    }
    return result;
}

struct DeleteException {
    void operator()(CException* exception) const { exception->Delete(); }
};

CString MessageOf(const CException& exception) {
    constexpr std::size_t LongestMessage = 4096;
    std::array<WCHAR, LongestMessage> text{};
    const int found = exception.GetErrorMessage(text.data(), static_cast<unsigned int>(text.size()), nullptr);
    return found == 0 ? CString() : CString(text.data());
}

HRESULT ReportCurrent(REFIID interfaceId) {
    try {
        throw;
    } catch (const MethodFailure& failure) {
        return Report(interfaceId, failure.m_result, failure.m_message);
    } catch (CException* thrown) {
        const std::unique_ptr<CException, DeleteException> exception(thrown);
        const bool isMemory = exception->IsKindOf(&CMemoryException::classCMemoryException);
        return Report(interfaceId, isMemory ? E_OUTOFMEMORY : E_FAIL, MessageOf(*exception));
    } catch (const std::bad_alloc&) {
        return Report(interfaceId, E_OUTOFMEMORY, "Memory ran out");
    } catch (const std::exception& exception) {
        return Report(interfaceId, E_FAIL, exception.what());
    } catch (...) {
        return Report(interfaceId, E_UNEXPECTED, "Unknown failure");
    }
}

}  // namespace

HRESULT ResultOfException(REFIID interfaceId) noexcept {
    try {
        return ReportCurrent(interfaceId);
    } catch (...) {
        // Out of memory for the message.
        return E_OUTOFMEMORY;
    }
}

void Check(HRESULT result) {
    if (FAILED(result)) {
        CString message;
        message.Format("The system reports 0x%08lX", static_cast<unsigned long>(result));
        throw MethodFailure{result, message};
    }
}

}  // namespace quillet::automation
