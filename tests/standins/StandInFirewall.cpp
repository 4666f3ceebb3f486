#include "StandInFirewall.h"

#include "ClassFactory.h"
#include "NullFirewall.h"
#include "Tracked.h"

#include <new>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

constexpr CLSID kNetFwMgr = {
    0x304CE942, 0x6E39, 0x40D8, {0x94, 0x3A, 0xB9, 0x13, 0xC4, 0x0C, 0x9C, 0xD4}};
constexpr CLSID kNetFwPolicy2 = {
    0xE2B3C97F, 0x6AE1, 0x41AC, {0x81, 0x7A, 0xF6, 0xF9, 0x21, 0x66, 0xD7, 0xDD}};
constexpr CLSID kNetFwRule = {
    0x2C5BC43E, 0x3369, 0x4C33, {0xAB, 0x0C, 0xBE, 0x94, 0x69, 0x67, 0x7A, 0xF4}};

template <typename Base>
using FirewallObject = Tracked<Base, &TheFirewallScript>;

class Profile : public FirewallObject<NullNetFwProfile> {};

class Policy : public FirewallObject<NullNetFwPolicy> {
public:
    HRESULT STDMETHODCALLTYPE get_CurrentProfile(INetFwProfile** profile) override
    {
        FirewallScript& script = TheFirewallScript();
        *profile = nullptr;
        if (script.endpointMissing > 0) {
            --script.endpointMissing;
            return static_cast<HRESULT>(0x800706D9); // endpoint not registered
        }
        if (SUCCEEDED(script.currentProfile)) {
            *profile = new Profile;
        }
        return script.currentProfile;
    }
};

class Manager : public FirewallObject<NullNetFwMgr> {
public:
    HRESULT STDMETHODCALLTYPE get_LocalPolicy(INetFwPolicy** policy) override
    {
        *policy = SUCCEEDED(TheFirewallScript().localPolicy) ? new Policy : nullptr;
        return TheFirewallScript().localPolicy;
    }
};

class Rule : public FirewallObject<NullNetFwRule> {
public:
    Rule() { TheFirewallScript().put.clear(); }
    Rule(std::wstring name, FirewallRule rule)
        : name_(std::move(name))
        , rule_(std::move(rule))
    {
    }

    HRESULT STDMETHODCALLTYPE put_Name(BSTR name) override
    {
        TheFirewallScript().put.push_back("Name");
        name_ = name;
        return TheFirewallScript().putName;
    }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) override
    {
        *name = SysAllocString(name_.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_ApplicationName(BSTR application) override
    {
        TheFirewallScript().put.push_back("ApplicationName");
        rule_.application = application;
        return TheFirewallScript().putApplicationName;
    }
    HRESULT STDMETHODCALLTYPE get_ApplicationName(BSTR* application) override
    {
        *application = SysAllocString(rule_.application.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Protocol(LONG protocol) override
    {
        TheFirewallScript().put.push_back("Protocol");
        rule_.protocol = protocol;
        return TheFirewallScript().putProtocol;
    }
    HRESULT STDMETHODCALLTYPE put_Profiles(LONG profiles) override
    {
        TheFirewallScript().put.push_back("Profiles");
        rule_.profiles = profiles;
        return TheFirewallScript().putProfiles;
    }
    HRESULT STDMETHODCALLTYPE put_Action(NET_FW_ACTION action) override
    {
        TheFirewallScript().put.push_back("Action");
        rule_.action = action;
        return TheFirewallScript().putAction;
    }
    HRESULT STDMETHODCALLTYPE put_Enabled(VARIANT_BOOL enabled) override
    {
        TheFirewallScript().put.push_back("Enabled");
        rule_.enabled = enabled;
        return TheFirewallScript().putEnabled;
    }

    const std::wstring& Name() const { return name_; }
    const FirewallRule& Stored() const { return rule_; }

private:
    std::wstring name_;
    FirewallRule rule_;
};

// Enumerates the rules that exist when the enumerator is made.
class RuleEnumerator : public FirewallObject<Counted<IEnumVARIANT>> {
public:
    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* items, ULONG* fetched) override
    {
        ULONG given = 0;
        for (; given < count && next_ < rules_.size(); ++given, ++next_) {
            items[given].vt = VT_DISPATCH;
            items[given].pdispVal = new Rule(rules_[next_].first, rules_[next_].second);
        }
        if (fetched != nullptr) {
            *fetched = given;
        }
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT**) override { return E_NOTIMPL; }

private:
    static std::vector<std::pair<std::wstring, FirewallRule>> Snapshot()
    {
        const auto stored = StoredFirewallRules();
        return {stored.begin(), stored.end()};
    }

    std::vector<std::pair<std::wstring, FirewallRule>> rules_ = Snapshot();
    std::size_t next_ = 0;
};

class Rules : public FirewallObject<NullNetFwRules> {
public:
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** enumerator) override
    {
        *enumerator = new RuleEnumerator;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Item(BSTR name, INetFwRule** rule) override
    {
        TheFirewallScript().askedFor.emplace_back(name);
        const bool exists = StoredFirewallRules().count(name) != 0;
        *rule = exists ? new Rule : nullptr;
        return exists ? S_OK : static_cast<HRESULT>(0x80070002);
    }
    HRESULT STDMETHODCALLTYPE Add(INetFwRule* rule) override
    {
        FirewallScript& script = TheFirewallScript();
        if (script.duringAdd) {
            script.duringAdd();
        }
        if (SUCCEEDED(script.add)) {
            const auto& added = static_cast<const Rule&>(*rule);
            StoreFirewallRule(added.Name(), added.Stored());
            ++script.adds;
            NoteFirewallDeed(L"add " + added.Name());
        }
        return script.add;
    }
    HRESULT STDMETHODCALLTYPE Remove(BSTR name) override
    {
        if (TheFirewallScript().duringRemove) {
            TheFirewallScript().duringRemove();
        }
        NoteFirewallDeed(std::wstring(L"remove ") + name);
        return EraseFirewallRule(name) ? S_OK : static_cast<HRESULT>(0x80070002);
    }
};

class Policy2 : public FirewallObject<NullNetFwPolicy2> {
public:
    HRESULT STDMETHODCALLTYPE get_Rules(INetFwRules** rules) override
    {
        *rules = SUCCEEDED(TheFirewallScript().rules) ? new Rules : nullptr;
        return TheFirewallScript().rules;
    }
};

// Reads the script at each creation, because tests change the script between two creations.
template <typename Object>
class ScriptedFactory : public Counted<IClassFactory> {
public:
    explicit ScriptedFactory(HRESULT FirewallScript::*refusal)
        : refusal_(refusal)
    {
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override
    {
        *object = nullptr;
        const HRESULT refusal = TheFirewallScript().*refusal_;
        if (FAILED(refusal)) {
            return refusal;
        }
        IUnknown* const made = new (std::nothrow) Object; // No exception may pass through COM.
        if (made == nullptr) {
            return E_OUTOFMEMORY;
        }
        const HRESULT hr = made->QueryInterface(iid, object);
        made->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    HRESULT FirewallScript::*refusal_;
};

} // namespace

FirewallScript& TheFirewallScript()
{
    static FirewallScript script;
    return script;
}

IUnknown* MakeFirewallFactory(REFCLSID classId)
{
    if (IsEqualCLSID(classId, kNetFwMgr)) {
        return new ScriptedFactory<Manager>(&FirewallScript::createManager);
    }
    if (IsEqualCLSID(classId, kNetFwPolicy2)) {
        return new ScriptedFactory<Policy2>(&FirewallScript::createPolicy2);
    }
    if (IsEqualCLSID(classId, kNetFwRule)) {
        return new ScriptedFactory<Rule>(&FirewallScript::createRule);
    }
    return nullptr;
}

StandInFirewall::StandInFirewall()
{
    TheFirewallScript() = FirewallScript();
    TheFirewallScript().put.reserve(6); // no later allocation: tests count allocations
    EraseAllFirewallRules();
    int index = 0;
    for (const CLSID& classId : {kNetFwMgr, kNetFwPolicy2, kNetFwRule}) {
        cookies_[index++] = RegisterInProcess(classId, MakeFirewallFactory(classId));
    }
}

StandInFirewall::~StandInFirewall()
{
    for (const DWORD cookie : cookies_) {
        CoRevokeClassObject(cookie);
    }
    EraseAllFirewallRules();
}

} // namespace vqrx::test
