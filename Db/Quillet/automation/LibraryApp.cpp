#include "Quillet/automation/LibraryApp.h"

#include "Quillet/automation/MethodFailure.h"
#include "Quillet/automation/TypeInformation.h"

namespace quillet::automation {

bool LibraryApp::Start(HINSTANCE instance) {
    m_instance = instance;
    return InitInstance();
}

CString LibraryApp::Path() const {
    WideString path(MAX_PATH, 0);
    for (;;) {
        const DWORD length = GetModuleFileNameW(m_instance, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            throw MethodFailure{HRESULT_FROM_WIN32(GetLastError()), "The library's file is not known"};
        }
        if (length < path.size()) {
            return CString(WideView(path.data(), length));
        }
        path.resize(path.size() * 2);
    }
}

void LibraryApp::ObjectGone() {
    if (--m_objects == 0) {
        TypeInformation::ForgetAll();
    }
}

}  // namespace quillet::automation
