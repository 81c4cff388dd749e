// The proxies and stubs that are made from IQuillet.idl. They use functions of IUnknown which mingw-w64
// declares to C++ alone.
#include <objbase.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid, void** ppvObject);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

#include "Quillet/automation/IQuillet_p.c"
