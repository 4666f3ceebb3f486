// Firewall of the fake machine. It runs, finds no rule, and accepts every change without an effect.
#include "FakeServers.h"

#include "Counted.h"

namespace fake_windows {
namespace {

using vqrx::test::Counted;

class Profile final : public Counted<INetFwProfile> {};

class Policy final : public Counted<INetFwPolicy> {
public:
    HRESULT get_CurrentProfile(INetFwProfile** profile) override
    {
        *profile = new Profile;
        return S_OK;
    }
};

class Manager final : public Counted<INetFwMgr> {
public:
    HRESULT get_LocalPolicy(INetFwPolicy** policy) override
    {
        *policy = new Policy;
        return S_OK;
    }
};

class Rule final : public Counted<INetFwRule> {
public:
    HRESULT put_Name(BSTR) override { return S_OK; }
    HRESULT put_ApplicationName(BSTR) override { return S_OK; }
    HRESULT put_Protocol(LONG) override { return S_OK; }
    HRESULT put_Profiles(LONG) override { return S_OK; }
    HRESULT put_Action(NET_FW_ACTION) override { return S_OK; }
    HRESULT put_Enabled(VARIANT_BOOL) override { return S_OK; }
};

class Rules final : public Counted<INetFwRules> {
public:
    HRESULT Item(BSTR, INetFwRule** rule) override
    {
        *rule = nullptr;
        return E_FAIL;
    }
    HRESULT Add(INetFwRule*) override { return S_OK; }
    HRESULT Remove(BSTR) override { return S_OK; }
};

class Policy2 final : public Counted<INetFwPolicy2> {
public:
    HRESULT get_Rules(INetFwRules** rules) override
    {
        *rules = new Rules;
        return S_OK;
    }
};

} // namespace

INetFwMgr* MakeFirewallManager()
{
    return new Manager;
}

INetFwPolicy2* MakeFirewallPolicy()
{
    return new Policy2;
}

INetFwRule* MakeFirewallRule()
{
    return new Rule;
}

} // namespace fake_windows
