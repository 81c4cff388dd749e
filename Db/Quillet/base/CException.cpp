#include "Quillet/base/CException.h"

#include <algorithm>

#include "Quillet/base/CString.h"
#include "Quillet/platform/MessageBox.h"

namespace quillet {

namespace {

int CopyFixedMessage(WideView message, WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) {
    if (helpContext != nullptr) {
        *helpContext = 0;
    }
    if (buffer == nullptr || capacity == 0) {
        return 0;
    }
    const std::size_t length = std::min<std::size_t>(message.size(), capacity - 1);
    std::copy_n(message.data(), length, buffer);
    buffer[length] = 0;
    return 1;
}

}  // namespace

const CRuntimeClass CObject::classCObject{"CObject", nullptr};
const CRuntimeClass CException::classCException{"CException", &CObject::classCObject};
const CRuntimeClass CMemoryException::classCMemoryException{"CMemoryException", &CException::classCException};
const CRuntimeClass CInvalidArgException::classCInvalidArgException{"CInvalidArgException",
                                                                    &CException::classCException};

CObject::CObject() = default;
CObject::CObject(const CObject&) = default;
CObject& CObject::operator=(const CObject&) = default;
CObject::~CObject() = default;

const CRuntimeClass* CObject::GetRuntimeClass() const {
    return &classCObject;
}

void CObject::Serialize(CArchive&) {
}

void CObject::AssertValid() const {
}

void CObject::Dump(CDumpContext&) const {
}

bool CObject::IsKindOf(const CRuntimeClass* classOf) const {
    const CRuntimeClass* candidate = GetRuntimeClass();
    while (candidate != nullptr && candidate != classOf) {
        candidate = candidate->m_baseClass;
    }
    return candidate != nullptr;
}

CException::CException() = default;
CException::CException(const CException&) = default;
CException& CException::operator=(const CException&) = default;
CException::~CException() = default;

const CRuntimeClass* CException::GetRuntimeClass() const {
    return &classCException;
}

int CException::GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) {
    return static_cast<const CException*>(this)->GetErrorMessage(buffer, capacity, helpContext);
}

int CException::GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const {
    CopyFixedMessage({}, buffer, capacity, helpContext);
    return 0;
}

int CException::ReportError() {
    WCHAR buffer[1024] = {};
    GetErrorMessage(buffer, static_cast<unsigned int>(std::size(buffer)), nullptr);
    platform::ShowMessage(buffer, OLESTR("Quillet"));
    return 1;
}

void CException::Delete() {
    delete this;
}

const CRuntimeClass* CMemoryException::GetRuntimeClass() const {
    return &classCMemoryException;
}

int CMemoryException::GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const {
    return CopyFixedMessage(OLESTR("Out of memory."), buffer, capacity, helpContext);
}

const CRuntimeClass* CInvalidArgException::GetRuntimeClass() const {
    return &classCInvalidArgException;
}

int CInvalidArgException::GetErrorMessage(WCHAR* buffer, unsigned int capacity,
                                          unsigned int* helpContext) const {
    return CopyFixedMessage(OLESTR("An invalid argument was encountered."), buffer, capacity, helpContext);
}

}  // namespace quillet
