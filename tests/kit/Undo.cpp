#include "Undo.h"

#include "KitProcesses.h"
#include "RegistryContent.h"

#include "FirewallChecks.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>

namespace vqrx::kit {
namespace {

using client::v0::Utf8;
using system::win32::v1::UniqueServiceHandle;

constexpr DWORD kDeadlineMs = 30000;
constexpr DWORD kPollMs = 50;
constexpr int kRounds = 3;

std::vector<std::wstring> NamesOfServices(SC_HANDLE manager)
{
    std::vector<std::byte> buffer(std::size_t{256} * 1024); // the documented maximum of the call
    std::vector<std::wstring> names;
    DWORD resume = 0;
    for (;;) {
        DWORD needed = 0;
        DWORD count = 0;
        const BOOL done = EnumServicesStatusExW(
            manager, SC_ENUM_PROCESS_INFO, SERVICE_WIN32, SERVICE_STATE_ALL,
            reinterpret_cast<BYTE*>(buffer.data()), static_cast<DWORD>(buffer.size()), &needed,
            &count, &resume, nullptr);
        const DWORD error = done != FALSE ? ERROR_SUCCESS : GetLastError();
        const auto* const entries =
            reinterpret_cast<const ENUM_SERVICE_STATUS_PROCESSW*>(buffer.data());
        for (DWORD index = 0; (done != FALSE || error == ERROR_MORE_DATA) && index < count;
             ++index) {
            names.emplace_back(entries[index].lpServiceName);
        }
        if (error != ERROR_MORE_DATA) {
            return names;
        }
    }
}

std::string CommandOfService(SC_HANDLE service)
{
    std::vector<std::byte> buffer(8192); // the documented maximum of the call
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    DWORD needed = 0;
    return QueryServiceConfigW(service, config, static_cast<DWORD>(buffer.size()), &needed) != FALSE
               ? Utf8(config->lpBinaryPathName)
               : std::string();
}

std::vector<std::wstring> ServicesOfKit(SC_HANDLE manager, const std::string& kitFolder)
{
    std::vector<std::wstring> found;
    for (const std::wstring& name : NamesOfServices(manager)) {
        const UniqueServiceHandle service(
            OpenServiceW(manager, name.c_str(), SERVICE_QUERY_CONFIG));
        if (service && NamesFileBelow(CommandOfService(service.Get()), kitFolder)) {
            found.push_back(name);
        }
    }
    return found;
}

bool ServiceGoes(SC_HANDLE manager, const std::wstring& name)
{
    const ULONGLONG deadline = GetTickCount64() + kDeadlineMs;
    for (;;) {
        const UniqueServiceHandle service(
            OpenServiceW(manager, name.c_str(), SERVICE_QUERY_STATUS));
        if (!service && GetLastError() == ERROR_SERVICE_DOES_NOT_EXIST) {
            return true;
        }
        if (GetTickCount64() > deadline) {
            return false;
        }
        Sleep(kPollMs); // the service manager has no event for the removal of a service
    }
}

// A supervisor that ends in the first round may have started a daemon again meanwhile.
void EndProcesses(const std::string& kitFolder, UndoResult& result)
{
    for (int round = 0; round < kRounds && result.leftOver.empty(); ++round) {
        for (const DWORD processId : ProcessesOfFolder(kitFolder)) {
            const std::string text = "process " + std::to_string(processId);
            (EndProcessAndWait(processId) ? result.undone : result.leftOver).push_back(text);
        }
    }
}

void RemoveServices(const std::string& kitFolder, UndoResult& result)
{
    const UniqueServiceHandle manager(
        OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE));
    const std::vector<std::wstring> names = ServicesOfKit(manager.Get(), kitFolder);
    for (const std::wstring& name : names) {
        const UniqueServiceHandle service(
            OpenServiceW(manager.Get(), name.c_str(), SERVICE_STOP | DELETE));
        SERVICE_STATUS status{};
        ControlService(service.Get(), SERVICE_CONTROL_STOP, &status);
        DeleteService(service.Get());
    }
    EndProcesses(kitFolder, result); // services end, too
    for (const std::wstring& name : names) {
        const std::string text = "service " + Utf8(name);
        (ServiceGoes(manager.Get(), name) ? result.undone : result.leftOver).push_back(text);
    }
}

void RemoveFirewallRules(const std::string& kitFolder, UndoResult& result)
{
    // A machine whose firewall does not list its rules, such as Wine, has none.
    for (const auto& rule : client::v0::GatherFirewallRules().rules) {
        if (NamesFileBelow(rule.application, kitFolder)) {
            const bool removed = client::v0::RemoveFirewallRule(rule.name) >= 0;
            (removed ? result.undone : result.leftOver).push_back("firewall rule " + rule.name);
        }
    }
}

void RestoreKeys(const Journal& journal, UndoResult& result)
{
    for (const SavedKey& saved : journal.keys) {
        if (ReadContent(saved.key) != saved.before) {
            (RestoreContent(saved) ? result.undone : result.leftOver)
                .push_back("registry key " + NameOf(saved.key));
        }
    }
}

} // namespace

Journal PresentState()
{
    Journal journal;
    for (const WatchedKey& key : KeysThatTestsChange()) {
        journal.keys.push_back({key, ReadContent(key)});
    }
    return journal;
}

UndoResult UndoChanges(const Journal& journal, const std::string& kitFolder)
{
    UndoResult result;
    RemoveServices(kitFolder, result);
    RestoreKeys(journal, result);
    // After the keys: the classes of the firewall are those of Windows again then.
    RemoveFirewallRules(kitFolder, result);
    return result;
}

} // namespace vqrx::kit
