#pragma once

#include <icftypes.h>
#include <oleauto.h>

struct INetFwProfile : IUnknown {};
struct INetFwPolicy : IUnknown {
    virtual HRESULT get_CurrentProfile(INetFwProfile** profile) = 0;
};
struct INetFwMgr : IUnknown {
    virtual HRESULT get_LocalPolicy(INetFwPolicy** policy) = 0;
};
struct INetFwRule : IUnknown {
    virtual HRESULT put_Name(BSTR name) = 0;
    virtual HRESULT put_ApplicationName(BSTR path) = 0;
    virtual HRESULT put_Protocol(LONG protocol) = 0;
    virtual HRESULT put_Profiles(LONG profiles) = 0;
    virtual HRESULT put_Action(NET_FW_ACTION action) = 0;
    virtual HRESULT put_Enabled(VARIANT_BOOL enabled) = 0;
};
struct INetFwRules : IUnknown {
    virtual HRESULT Item(BSTR name, INetFwRule** rule) = 0;
    virtual HRESULT Add(INetFwRule* rule) = 0;
    virtual HRESULT Remove(BSTR name) = 0;
};
struct INetFwPolicy2 : IUnknown {
    virtual HRESULT get_Rules(INetFwRules** rules) = 0;
};
