/* Declares the three functions of a proxy's IUnknown. The generated proxy calls them, and the C
   headers of mingw lack them; rpcproxy.h of the Windows SDK has these declarations.
   The compiler includes this file before each generated source. It must not include rpcproxy.h,
   because the declarations there depend on macros that the sources define first; without the macros
   the DLL exports no interface. */
#ifndef DAEMON_MGR_PROXY_RPC_H
#define DAEMON_MGR_PROXY_RPC_H

#include <unknwn.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid, void** ppv);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

#endif
