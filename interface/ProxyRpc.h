/* What the generated proxy needs and mingw's C headers omit: the delegating IUnknown of a proxy, as
   rpcproxy.h of the Windows SDK declares it. Included ahead of every generated source, so it must
   not include rpcproxy.h itself: what that declares depends on macros which the sources set first
   (with them set too late no interface of the library is found). */
#ifndef DAEMON_MGR_PROXY_RPC_H
#define DAEMON_MGR_PROXY_RPC_H

#include <unknwn.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid, void** ppv);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

#endif
