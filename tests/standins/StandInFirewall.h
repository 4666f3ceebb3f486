#pragma once

#include <windows.h>

#include <unknwn.h>

#include <map>
#include <string>
#include <vector>

namespace vqrx::test {

/// A rule as the stand-in keeps it.
struct FirewallRule {
    std::wstring application;
    long protocol = 0;
    long profiles = 0;
    int action = -1;
    int enabled = 0;

    bool operator==(const FirewallRule&) const = default;
};

/// The rules by name; kept in the registry of the user, where every process sees them.
std::map<std::wstring, FirewallRule> StoredFirewallRules();
void StoreFirewallRule(const std::wstring& name, const FirewallRule& rule);
bool EraseFirewallRule(const std::wstring& name);
/// The rules, and what was done to them.
void EraseAllFirewallRules();

/// Something that the stand-in was made to do, by any process.
struct FirewallDeed {
    std::wstring text; ///< "add" or "remove" and the rule's name
    ULONGLONG time;    ///< system time, units of 100 ns, as in FILETIME

    bool operator==(const std::wstring& other) const { return text == other; }
};

/// Whatever rules were added or removed, in order; kept beside the rules.
std::vector<FirewallDeed> FirewallDeeds();
void NoteFirewallDeed(const std::wstring& text);

/// What the stand-in for the firewall answers, step by step.
struct FirewallScript {
    HRESULT createManager = S_OK;
    HRESULT localPolicy = S_OK;
    HRESULT createPolicy2 = S_OK;
    HRESULT currentProfile = S_OK;
    int endpointMissing = 0; ///< so many answers of "endpoint not registered" before currentProfile
    HRESULT rules = S_OK;
    HRESULT createRule = S_OK;
    HRESULT putName = S_OK;
    HRESULT putApplicationName = S_OK;
    HRESULT putProtocol = S_OK;
    HRESULT putProfiles = S_OK;
    HRESULT putAction = S_OK;
    HRESULT putEnabled = S_OK;
    HRESULT add = S_OK;

    int adds = 0;                       ///< rules added so far
    std::vector<std::wstring> askedFor; ///< the names that were looked up
    long liveObjects = 0;               ///< references that somebody still holds
};

/// The script of this process's stand-in.
FirewallScript& TheFirewallScript();

/// A class factory for one of the firewall's classes, with one reference; null for another class.
IUnknown* MakeFirewallFactory(REFCLSID classId);

/// Stands in for the firewall in this process for as long as it lives, and begins without a rule.
class StandInFirewall {
public:
    StandInFirewall();
    StandInFirewall(const StandInFirewall&) = delete;
    StandInFirewall& operator=(const StandInFirewall&) = delete;
    ~StandInFirewall();

private:
    DWORD cookies_[3] = {};
};

} // namespace vqrx::test
