#include "Firewall.h"

#include "com/ComText.h"
#include "com/UniqueBstr.h"
#include "win32/FirewallNames.h"
#include "win32/FirewallPolicy.h"

#include <icftypes.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace vqrx::host::v0 {
namespace {

using log::i_logger::v0::ILogger;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;
using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::win32::v1::kFirewallRulePrefix;
using system::win32::v1::kNetFwPolicy2;

// Class ids of netfw.h. Not every SDK has an import library that defines them.
constexpr CLSID kNetFwMgr = {
    0x304CE942, 0x6E39, 0x40D8, {0x94, 0x3A, 0xB9, 0x13, 0xC4, 0x0C, 0x9C, 0xD4}};
constexpr CLSID kNetFwRule = {
    0x2C5BC43E, 0x3369, 0x4C33, {0xAB, 0x0C, 0xBE, 0x94, 0x69, 0x67, 0x7A, 0xF4}};

constexpr LONG kAnyProtocol = 256; // NET_FW_IP_PROTOCOL_ANY, missing in mingw's icftypes.h
constexpr auto kEndpointNotRegistered = static_cast<HRESULT>(0x800706D9); // EPT_S_NOT_REGISTERED

template <typename Interface>
HRESULT Create(const CLSID& classId, ComPtr<Interface>& object)
{
    return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface),
                            object.PutVoid());
}

unsigned long Printable(HRESULT hr) noexcept
{
    return static_cast<unsigned long>(hr);
}

UniqueBstr BstrFromAnsi(const std::string& text)
{
    return UniqueBstr(system::com::v1::TextForCom(text, CP_THREAD_ACP));
}

UniqueBstr RuleName(const std::string& path)
{
    return BstrFromAnsi(std::string(kFirewallRulePrefix).append(path));
}

// One property of a rule, and the format of the line that is logged if it cannot be set.
struct RuleProperty {
    HRESULT (*set)(INetFwRule& rule, BSTR name, BSTR path);
    const char* failure;
};

// In the order in which the properties are set. The first one that fails ends the making of a rule.
constexpr std::array kRuleProperties{
    RuleProperty{[](INetFwRule& rule, BSTR name, BSTR) { return rule.put_Name(name); },
                 "Firewall: Failed to sets the name property for this rule.: 0x%08lx"},
    RuleProperty{[](INetFwRule& rule, BSTR, BSTR path) { return rule.put_ApplicationName(path); },
                 "Firewall: Failed to sets the application name property for this rule.: 0x%08lx"},
    RuleProperty{[](INetFwRule& rule, BSTR, BSTR) { return rule.put_Protocol(kAnyProtocol); },
                 "Firewall: Failed to sets the protocol property for this rule.: 0x%08lx"},
    RuleProperty{
        [](INetFwRule& rule, BSTR, BSTR) { return rule.put_Profiles(NET_FW_PROFILE2_ALL); },
        "Firewall: Failed to sets the profiles property for this rule.: 0x%08lx"},
    RuleProperty{[](INetFwRule& rule, BSTR, BSTR) { return rule.put_Action(NET_FW_ACTION_ALLOW); },
                 "Firewall: Failed to sets the action property for this rule.: 0x%08lx"},
    RuleProperty{[](INetFwRule& rule, BSTR, BSTR) { return rule.put_Enabled(VARIANT_TRUE); },
                 "Firewall: Failed to enabled this rule.: 0x%08lx"},
};

// Log gets these formats from the table, so the compiler does not check its argument against them.
constexpr bool TakesOneHexadecimalNumber(const RuleProperty& property)
{
    constexpr std::string_view kEnd = "0x%08lx";
    const std::string_view format = property.failure;
    return format.ends_with(kEnd) && format.find('%') == format.size() - kEnd.size() + 2;
}
static_assert(std::all_of(kRuleProperties.begin(), kRuleProperties.end(),
                          TakesOneHexadecimalNumber));

} // namespace

Firewall::Firewall(const std::string& name, ILogger* logger, const SleepSeconds& sleep)
    : logger_(logger)
    , portRulePattern_(name + "_tcp_port_%d")
{
    if (WaitForFirewallService(logger_, sleep)) {
        Bind(sleep);
    }
}

Firewall::~Firewall() = default;

void Firewall::Bind(const SleepSeconds& sleep)
{
    ComPtr<INetFwMgr> manager;
    HRESULT hr = Create(kNetFwMgr, manager);
    if (FAILED(hr)) {
        logger_->Log(kLevelError, "Firewall: CoCreateInstance failed: 0x%08lx", Printable(hr));
        return;
    }
    ComPtr<INetFwPolicy> localPolicy;
    hr = manager->get_LocalPolicy(localPolicy.Put());
    if (FAILED(hr)) {
        logger_->Log(kLevelError, "Firewall: get_LocalPolicy failed: 0x%08lx", Printable(hr));
        return;
    }
    hr = Create(kNetFwPolicy2, policy_);
    if (SUCCEEDED(hr)) {
        logger_->Log(kLevelInformation, "Detected Windows Firewall with Advanced Security");
    } else {
        policy_.Reset();
    }
    WaitForEndpoint(localPolicy.Get(), sleep);
}

// After the service has started, its RPC endpoint may need some time until it answers.
void Firewall::WaitForEndpoint(INetFwPolicy* localPolicy, const SleepSeconds& sleep)
{
    for (DoublingPause pause;; pause.Double()) {
        const HRESULT hr = localPolicy->get_CurrentProfile(currentProfile_.Put());
        if (SUCCEEDED(hr)) {
            return;
        }
        if (hr != kEndpointNotRegistered) {
            logger_->Log(kLevelError, "Firewall: get_CurrentProfile failed: 0x%08lx",
                         Printable(hr));
            return;
        }
        logger_->Log(kLevelWarning, "Firewall: service is not yet started, waiting %d s",
                     static_cast<int>(pause.Seconds()));
        sleep(pause.Seconds());
    }
}

ComPtr<INetFwRules> Firewall::Rules()
{
    ComPtr<INetFwRules> rules;
    if (!policy_) {
        logger_->Log(kLevelError,
                     "Firewall: Windows Firewall with Advanced Security not available !");
        return rules;
    }
    const HRESULT hr = policy_->get_Rules(rules.Put());
    if (FAILED(hr)) {
        logger_->Log(kLevelError, "Firewall: Failed to retrieve firewall rules collection: 0x%08lx",
                     Printable(hr));
        return {};
    }
    return rules;
}

ComPtr<INetFwRule> Firewall::MakeRule(BSTR name, BSTR path)
{
    ComPtr<INetFwRule> rule;
    const HRESULT created = Create(kNetFwRule, rule);
    if (FAILED(created)) {
        logger_->Log(kLevelError, "Firewall: Failed create rule.: 0x%08lx", Printable(created));
        return {};
    }
    for (const RuleProperty& property : kRuleProperties) {
        const HRESULT hr = property.set(*rule.Get(), name, path);
        if (FAILED(hr)) {
            logger_->Log(kLevelError, property.failure, Printable(hr));
            return {};
        }
    }
    return rule;
}

void Firewall::AllowApplication(const std::string& path)
{
    const ComPtr<INetFwRules> rules = Rules();
    if (!rules) {
        return;
    }
    const UniqueBstr name = RuleName(path);
    ComPtr<INetFwRule> existing;
    if (SUCCEEDED(rules->Item(name.Get(), existing.Put())) && existing) {
        return;
    }
    const UniqueBstr application = BstrFromAnsi(path);
    const ComPtr<INetFwRule> rule = MakeRule(name.Get(), application.Get());
    if (!rule) {
        return;
    }
    const HRESULT hr = rules->Add(rule.Get());
    if (FAILED(hr)) {
        logger_->Log(kLevelError, "Firewall: Failed to add rule.: 0x%08lx", Printable(hr));
    }
}

void Firewall::RemoveApplication(const std::string& path)
{
    const ComPtr<INetFwRules> rules = Rules();
    if (!rules) {
        return;
    }
    const UniqueBstr name = RuleName(path);
    const HRESULT hr = rules->Remove(name.Get());
    if (FAILED(hr)) {
        logger_->Log(kLevelError, "Firewall: Missing firewall rule : 0x%08lx", Printable(hr));
    }
}

} // namespace vqrx::host::v0
