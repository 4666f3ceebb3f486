#pragma once

#include "Counted.h"

#include <netfw.h>

namespace vqrx::test {

// Implementations of the firewall interfaces. Every method returns E_NOTIMPL. A stand-in derives
// from one of them and overrides the methods that the product calls.

/// Base of an object whose interface derives from IDispatch.
template <typename Interface>
class CountedDispatch : public Counted<Interface> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        return E_NOTIMPL;
    }
};

class NullNetFwMgr : public CountedDispatch<INetFwMgr> {
public:
    HRESULT STDMETHODCALLTYPE get_LocalPolicy(INetFwPolicy**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurrentProfileType(NET_FW_PROFILE_TYPE*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RestoreDefaults() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsPortAllowed(BSTR, NET_FW_IP_VERSION, LONG, BSTR, NET_FW_IP_PROTOCOL,
                                            VARIANT*, VARIANT*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE IsIcmpTypeAllowed(NET_FW_IP_VERSION, BSTR, BYTE, VARIANT*,
                                                VARIANT*) override
    {
        return E_NOTIMPL;
    }
};

class NullNetFwPolicy : public CountedDispatch<INetFwPolicy> {
public:
    HRESULT STDMETHODCALLTYPE get_CurrentProfile(INetFwProfile**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProfileByType(NET_FW_PROFILE_TYPE, INetFwProfile**) override
    {
        return E_NOTIMPL;
    }
};

class NullNetFwProfile : public CountedDispatch<INetFwProfile> {
public:
    HRESULT STDMETHODCALLTYPE get_Type(NET_FW_PROFILE_TYPE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FirewallEnabled(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_FirewallEnabled(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ExceptionsNotAllowed(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_ExceptionsNotAllowed(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_NotificationsDisabled(VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_NotificationsDisabled(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE
    get_UnicastResponsesToMulticastBroadcastDisabled(VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE
    put_UnicastResponsesToMulticastBroadcastDisabled(VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_RemoteAdminSettings(INetFwRemoteAdminSettings**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_IcmpSettings(INetFwIcmpSettings**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_GloballyOpenPorts(INetFwOpenPorts**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_Services(INetFwServices**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_AuthorizedApplications(INetFwAuthorizedApplications**) override
    {
        return E_NOTIMPL;
    }
};

class NullNetFwPolicy2 : public CountedDispatch<INetFwPolicy2> {
public:
    HRESULT STDMETHODCALLTYPE get_CurrentProfileTypes(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FirewallEnabled(NET_FW_PROFILE_TYPE2, VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_FirewallEnabled(NET_FW_PROFILE_TYPE2, VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_ExcludedInterfaces(NET_FW_PROFILE_TYPE2, VARIANT*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_ExcludedInterfaces(NET_FW_PROFILE_TYPE2, VARIANT) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_BlockAllInboundTraffic(NET_FW_PROFILE_TYPE2,
                                                         VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_BlockAllInboundTraffic(NET_FW_PROFILE_TYPE2,
                                                         VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_NotificationsDisabled(NET_FW_PROFILE_TYPE2,
                                                        VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_NotificationsDisabled(NET_FW_PROFILE_TYPE2, VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE
    get_UnicastResponsesToMulticastBroadcastDisabled(NET_FW_PROFILE_TYPE2, VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE
    put_UnicastResponsesToMulticastBroadcastDisabled(NET_FW_PROFILE_TYPE2, VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_Rules(INetFwRules**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ServiceRestriction(INetFwServiceRestriction**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnableRuleGroup(LONG, BSTR, VARIANT_BOOL) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE IsRuleGroupEnabled(LONG, BSTR, VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RestoreLocalFirewallDefaults() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_DefaultInboundAction(NET_FW_PROFILE_TYPE2,
                                                       NET_FW_ACTION*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_DefaultInboundAction(NET_FW_PROFILE_TYPE2, NET_FW_ACTION) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_DefaultOutboundAction(NET_FW_PROFILE_TYPE2,
                                                        NET_FW_ACTION*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_DefaultOutboundAction(NET_FW_PROFILE_TYPE2,
                                                        NET_FW_ACTION) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_IsRuleGroupCurrentlyEnabled(BSTR, VARIANT_BOOL*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_LocalPolicyModifyState(NET_FW_MODIFY_STATE*) override
    {
        return E_NOTIMPL;
    }
};

class NullNetFwRules : public CountedDispatch<INetFwRules> {
public:
    HRESULT STDMETHODCALLTYPE get_Count(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Add(INetFwRule*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Remove(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Item(BSTR, INetFwRule**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown**) override { return E_NOTIMPL; }
};

class NullNetFwRule : public CountedDispatch<INetFwRule> {
public:
    HRESULT STDMETHODCALLTYPE get_Name(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Name(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Description(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Description(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ApplicationName(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_ApplicationName(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ServiceName(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_ServiceName(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Protocol(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Protocol(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LocalPorts(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_LocalPorts(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RemotePorts(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RemotePorts(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LocalAddresses(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_LocalAddresses(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RemoteAddresses(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RemoteAddresses(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_IcmpTypesAndCodes(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_IcmpTypesAndCodes(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Direction(NET_FW_RULE_DIRECTION*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Direction(NET_FW_RULE_DIRECTION) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Interfaces(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Interfaces(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_InterfaceTypes(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_InterfaceTypes(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Enabled(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Enabled(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Grouping(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Grouping(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Profiles(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Profiles(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_EdgeTraversal(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_EdgeTraversal(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Action(NET_FW_ACTION*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Action(NET_FW_ACTION) override { return E_NOTIMPL; }
};

} // namespace vqrx::test
