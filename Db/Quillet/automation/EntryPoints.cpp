// What the system's component loader calls.
#include "Quillet/automation/LibraryApp.h"
#include "Quillet/automation/MethodFailure.h"
#include "Quillet/automation/Module.h"
#include "Quillet/automation/ProxyEntryPoints.h"
#include "Quillet/automation/Registration.h"
#include "Quillet/automation/RegistryPlace.h"

using quillet::CString;
using quillet::automation::App;
using quillet::automation::Check;
using quillet::automation::Guarded;
using quillet::automation::Module;
using quillet::automation::Registration;
using quillet::automation::RegistryPlace;

namespace {

void Register() {
    Registration(App().Path(), Module::Instance().Classes()).Register();
    Check(ProxyDllRegisterServer());
}

void Unregister() {
    Registration(App().Path(), Module::Instance().Classes()).Unregister();
    // Unregistering the type library removed keys of the proxies too. They are restored, so that the proxies
    // find what they remove.
    Check(ProxyDllRegisterServer());
    Check(ProxyDllUnregisterServer());
}

}  // namespace

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    const HRESULT ofProxies = ProxyDllGetClassObject(classId, interfaceId, object);
    if (SUCCEEDED(ofProxies)) {
        return ofProxies;
    }
    HRESULT ofClasses = S_OK;
    const HRESULT asked = Guarded(IID_IClassFactory, [&] {
        ofClasses = Module::Instance().GetClassObject(classId, interfaceId, object);
    });
    return FAILED(asked) ? asked : ofClasses;
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    const HRESULT ofProxies = ProxyDllCanUnloadNow();
    if (ofProxies != S_OK) {
        return ofProxies;
    }
    return App().IsInUse() || Module::Instance().IsLocked() ? S_FALSE : S_OK;
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
    return Guarded(IID_NULL, [] {
        const RegistryPlace place;
        Register();
    });
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
    return Guarded(IID_NULL, [] {
        const RegistryPlace place;
        Unregister();
    });
}

// "user" registers for the current user alone, whatever the rights (regsvr32 /n /i:user).
HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR forWhom) {
    if (forWhom == nullptr || CString(forWhom).CompareNoCase("user") != 0) {
        return E_INVALIDARG;
    }
    return Guarded(IID_NULL, [install] {
        const RegistryPlace place(true);
        if (install != FALSE) {
            Register();
        } else {
            Unregister();
        }
    });
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        return App().Start(instance) ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH) {
        App().End();
    }
    return TRUE;
}
}
