#include "FirewallChecks.h"

#include "Utf8.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "com/UniqueVariant.h"
#include "win32/FirewallNames.h"
#include "win32/FirewallPolicy.h"
#include "win32/ServiceConfig.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <netfw.h>
#include <oleauto.h>

#include <cstddef>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::com::v1::UniqueVariant;
using system::win32::v1::kFirewallRulePrefix;
using system::win32::v1::kFirewallService;
using system::win32::v1::kNetFwPolicy2;
using system::win32::v1::kOlderFirewallService;
using system::win32::v1::kServiceConfigBytes;
using system::win32::v1::UniqueServiceHandle;

HRESULT OpenRules(ComPtr<INetFwRules>& rules)
{
    ComPtr<INetFwPolicy2> policy;
    const HRESULT hr = CoCreateInstance(kNetFwPolicy2, nullptr, CLSCTX_INPROC_SERVER,
                                        __uuidof(INetFwPolicy2), policy.PutVoid());
    return FAILED(hr) ? hr : policy->get_Rules(rules.Put());
}

FirewallRuleFacts::Program LookForProgram(std::wstring path)
{
    using Program = FirewallRuleFacts::Program;
    std::wstring expanded(32768, L'\0'); // the documented maximum of the call
    const DWORD length = ExpandEnvironmentStringsW(path.c_str(), expanded.data(),
                                                   static_cast<DWORD>(expanded.size()));
    if (length != 0 && length <= expanded.size()) { // the length counts the final zero
        expanded.resize(length - 1);
        path = expanded;
    }
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return Program::kThere;
    }
    const DWORD error = GetLastError();
    const bool hasDrive = path.size() > 2 && path[1] == L':';
    if (!hasDrive || GetDriveTypeW(path.substr(0, 2).append(L"\\").c_str()) == DRIVE_NO_ROOT_DIR) {
        return Program::kUnknown;
    }
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Program::kGone
                                                                          : Program::kUnknown;
}

// @return false for a rule that cannot be read, or whose name does not begin with the prefix
bool ReadRule(const UniqueVariant& item, FirewallRuleFacts& facts)
{
    if (item.Get().vt != VT_DISPATCH && item.Get().vt != VT_UNKNOWN) {
        return false;
    }
    const auto rule = ComPtr<IUnknown>::Share(item.Get().punkVal).Query<INetFwRule>();
    UniqueBstr name;
    UniqueBstr application;
    if (!rule || FAILED(rule->get_Name(name.Put()))) {
        return false;
    }
    facts.name = Utf8(name.View());
    if (!facts.name.starts_with(kFirewallRulePrefix) ||
        FAILED(rule->get_ApplicationName(application.Put()))) {
        return false;
    }
    facts.application = Utf8(application.View());
    facts.program = LookForProgram(std::wstring(application.View()));
    return true;
}

} // namespace

FirewallServiceFacts GatherFirewallServiceFacts()
{
    FirewallServiceFacts facts;
    const UniqueServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager) {
        facts.managerError = GetLastError();
        return facts;
    }
    UniqueServiceHandle service;
    for (const char* name : {kFirewallService, kOlderFirewallService}) {
        facts.name = name;
        service.Reset(
            OpenServiceA(manager.Get(), name, SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS));
        facts.serviceError = service ? 0 : GetLastError();
        if (service) {
            break;
        }
    }
    if (!service) {
        return facts;
    }
    std::vector<std::byte> buffer(kServiceConfigBytes);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
    DWORD needed = 0;
    SERVICE_STATUS status{};
    if (QueryServiceConfigA(service.Get(), config, kServiceConfigBytes, &needed) == FALSE ||
        QueryServiceStatus(service.Get(), &status) == FALSE) {
        facts.queryError = GetLastError();
        return facts;
    }
    facts.startType = config->dwStartType;
    facts.state = status.dwCurrentState;
    return facts;
}

FirewallRulesFacts GatherFirewallRules()
{
    FirewallRulesFacts facts;
    ComPtr<INetFwRules> rules;
    ComPtr<IUnknown> unknown;
    facts.result = OpenRules(rules);
    if (SUCCEEDED(facts.result)) {
        facts.result = rules->get__NewEnum(unknown.Put());
    }
    if (FAILED(facts.result)) {
        return facts;
    }
    const auto items = unknown.Query<IEnumVARIANT>();
    if (!items) {
        facts.result = E_NOINTERFACE;
        return facts;
    }
    for (;;) {
        UniqueVariant item;
        ULONG fetched = 0;
        const HRESULT hr = items->Next(1, item.Put(), &fetched);
        if (hr != S_OK || fetched == 0) {
            facts.result = FAILED(hr) ? hr : S_OK;
            return facts;
        }
        FirewallRuleFacts rule;
        if (ReadRule(item, rule)) {
            facts.rules.push_back(std::move(rule));
        }
    }
}

long RemoveFirewallRule(const std::string& name)
{
    ComPtr<INetFwRules> rules;
    const HRESULT hr = OpenRules(rules);
    return FAILED(hr) ? hr : rules->Remove(UniqueBstr(Wide(name)).Get());
}

} // namespace vqrx::client::v0
