#pragma once

// For Windows the interface compiler generates this header from interface/IDaemonMgrControl.idl.
#include <oleauto.h>

struct IDaemonMgrControl : IUnknown {
    virtual HRESULT Launch(BSTR path, LPSAFEARRAY* args, DWORD* daemonId) = 0;
    virtual HRESULT Stop(DWORD daemonId) = 0;
    virtual HRESULT Attach(DWORD processId, LPSAFEARRAY* args, DWORD* daemonId) = 0;
    virtual HRESULT Detach(DWORD daemonId) = 0;
    virtual HRESULT Exit() = 0;
};
#define IID_IDaemonMgrControl kInterfaceId<IDaemonMgrControl>
