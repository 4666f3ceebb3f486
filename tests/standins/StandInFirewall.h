#pragma once

#include <windows.h>

#include <unknwn.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::test {

/// A rule of the stand-in firewall.
struct FirewallRule {
    std::wstring application;
    long protocol = 0;
    long profiles = 0;
    int action = -1;
    int enabled = 0;

    bool operator==(const FirewallRule&) const = default;
};

/// Returns the rules by name. The rules are in the user's registry, so all processes share them.
[[nodiscard]] std::map<std::wstring, FirewallRule> StoredFirewallRules();
void StoreFirewallRule(const std::wstring& name, const FirewallRule& rule);
/// @return false if no rule has this name
bool EraseFirewallRule(const std::wstring& name);
/// Removes all rules and the list of deeds.
void EraseAllFirewallRules();

/// An Add or Remove that any process called on the stand-in.
struct FirewallDeed {
    std::wstring text; ///< "add" or "remove" and the rule's name
    ULONGLONG time;    ///< system time, units of 100 ns, as in FILETIME

    bool operator==(const std::wstring& other) const { return text == other; }
};

/// Returns the deeds of all processes in order of time. The list is in the registry, beside the
/// rules.
[[nodiscard]] std::vector<FirewallDeed> FirewallDeeds();
/// Appends a deed with the current time.
void NoteFirewallDeed(const std::wstring& text);

/// Result of each step of the stand-in firewall in this process.
struct FirewallScript {
    HRESULT createManager = S_OK;
    HRESULT localPolicy = S_OK;
    HRESULT createPolicy2 = S_OK;
    HRESULT currentProfile = S_OK;
    int endpointMissing = 0; ///< number of "endpoint not registered" results before currentProfile
    HRESULT rules = S_OK;
    HRESULT createRule = S_OK;
    HRESULT putName = S_OK;
    HRESULT putApplicationName = S_OK;
    HRESULT putProtocol = S_OK;
    HRESULT putProfiles = S_OK;
    HRESULT putAction = S_OK;
    HRESULT putEnabled = S_OK;
    HRESULT add = S_OK;

    std::function<void()> duringAdd;    ///< called in each Add, before the rule is there
    std::function<void()> duringRemove; ///< called in each Remove, before the rule is gone

    int adds = 0;                       ///< rules added so far
    std::vector<std::wstring> askedFor; ///< names passed to Item
    std::vector<std::string_view> put;  ///< properties set on the newest rule, in their order
    long liveObjects = 0;               ///< objects that are not yet deleted
};

/// Returns the script of this process.
[[nodiscard]] FirewallScript& TheFirewallScript();

/// Returns a class factory with one reference, which the caller owns. Returns null if the class is
/// not one of the firewall.
[[nodiscard]] IUnknown* MakeFirewallFactory(REFCLSID classId);

/// Registers the stand-in firewall in this process, without a rule. The destructor removes the
/// registration and all rules.
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
