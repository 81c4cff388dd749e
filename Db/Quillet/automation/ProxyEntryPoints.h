// The entry points of the proxies and stubs, made from IQuillet.idl (dlldata.c).
#pragma once

#include "Quillet/platform/Automation.h"

extern "C" {

HRESULT STDAPICALLTYPE ProxyDllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object);
HRESULT STDAPICALLTYPE ProxyDllCanUnloadNow();
HRESULT STDAPICALLTYPE ProxyDllRegisterServer();
HRESULT STDAPICALLTYPE ProxyDllUnregisterServer();
BOOL WINAPI ProxyDllMain(HINSTANCE instance, DWORD reason, void* reserved);
}
