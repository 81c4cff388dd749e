#include "Quillet/automation/CIQuilletApp.h"

#include "Quillet/automation/ProxyEntryPoints.h"

bool CIQuilletApp::InitInstance() {
    ProxyDllMain(Instance(), DLL_PROCESS_ATTACH, nullptr);
    return LibraryApp::InitInstance();
}

int CIQuilletApp::ExitInstance() {
    return LibraryApp::ExitInstance();
}

namespace quillet::automation {

LibraryApp& App() {
    static CIQuilletApp app;
    return app;
}

}  // namespace quillet::automation
