#include "GuardServiceEntry.h"

#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueServiceHandle;

constexpr const wchar_t* kDisplayName = L"DaemonManager guard";
constexpr const wchar_t* kDescription =
    L"Starts the DaemonManager supervisor, and starts it again if it ends without an order.";
constexpr std::array<DWORD, 3> kRestartDelaysMs = {1000, 5000, 60000};
constexpr DWORD kForgetFailuresSeconds = 3600;

[[noreturn]] void ThrowGuardServiceError(const std::string& what, DWORD error)
{
    throw std::runtime_error("the service DaemonGuard cannot be " + what + ": Windows error " +
                             std::to_string(error) +
                             (error == ERROR_ACCESS_DENIED ? "; run this command as administrator"
                              : error == ERROR_SERVICE_MARKED_FOR_DELETE
                                  ? "; it was removed and still runs: sc stop DaemonGuard ends it"
                                  : ""));
}

UniqueServiceHandle OpenManager(DWORD access)
{
    UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, access));
    if (!manager) {
        ThrowGuardServiceError("looked for", GetLastError());
    }
    return manager;
}

// @return empty if there is no such service
UniqueServiceHandle OpenGuardService(DWORD access, const char* purpose)
{
    const UniqueServiceHandle manager = OpenManager(SC_MANAGER_CONNECT);
    UniqueServiceHandle service(OpenServiceW(manager.Get(), kGuardName, access));
    if (!service) {
        const DWORD error = GetLastError();
        if (error != ERROR_SERVICE_DOES_NOT_EXIST) {
            ThrowGuardServiceError(purpose, error);
        }
    }
    return service;
}

void SetRecovery(SC_HANDLE service)
{
    std::array<SC_ACTION, kRestartDelaysMs.size()> actions{};
    for (std::size_t index = 0; index < actions.size(); ++index) {
        actions[index] = {SC_ACTION_RESTART, kRestartDelaysMs[index]};
    }
    SERVICE_FAILURE_ACTIONSW recovery{};
    recovery.dwResetPeriod = kForgetFailuresSeconds;
    recovery.cActions = static_cast<DWORD>(actions.size());
    recovery.lpsaActions = actions.data();
    if (ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS, &recovery) == FALSE) {
        ThrowGuardServiceError("given recovery actions", GetLastError());
    }
    // Also after an end with an error code. Windows before Vista does not know this, nor does Wine.
    SERVICE_FAILURE_ACTIONS_FLAG always{TRUE};
    ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS_FLAG, &always);
}

} // namespace

std::optional<AutostartEntry> ReadGuardService()
{
    const UniqueServiceHandle service =
        OpenGuardService(SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS, "opened");
    if (!service) {
        return std::nullopt;
    }
    DWORD size = 0;
    QueryServiceConfigW(service.Get(), nullptr, 0, &size);
    std::vector<std::byte> buffer(size);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    if (size == 0 || QueryServiceConfigW(service.Get(), config, size, &needed) == FALSE ||
        QueryServiceStatusEx(service.Get(), SC_STATUS_PROCESS_INFO,
                             reinterpret_cast<BYTE*>(&status), sizeof status, &needed) == FALSE) {
        ThrowGuardServiceError("read", GetLastError());
    }
    AutostartEntry entry;
    entry.mode = GuardMode::kService;
    entry.commandLine = Utf8(config->lpBinaryPathName);
    entry.isAutomatic = config->dwStartType == SERVICE_AUTO_START;
    entry.isRunning = status.dwCurrentState != SERVICE_STOPPED;
    return entry;
}

void MakeGuardService(const std::string& commandLine)
{
    const UniqueServiceHandle manager = OpenManager(SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE);
    const std::wstring command = Wide(commandLine);
    UniqueServiceHandle service(
        CreateServiceW(manager.Get(), kGuardName, kDisplayName, SERVICE_ALL_ACCESS,
                       SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                       command.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
    if (!service) {
        const DWORD error = GetLastError();
        if (error != ERROR_SERVICE_EXISTS) {
            ThrowGuardServiceError("made", error);
        }
        service = OpenGuardService(SERVICE_ALL_ACCESS, "opened");
        if (ChangeServiceConfigW(service.Get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
                                 SERVICE_ERROR_NORMAL, command.c_str(), nullptr, nullptr, nullptr,
                                 nullptr, nullptr, kDisplayName) == FALSE) {
            ThrowGuardServiceError("changed", GetLastError());
        }
    }
    std::wstring text = kDescription;
    SERVICE_DESCRIPTIONW description{text.data()};
    if (ChangeServiceConfig2W(service.Get(), SERVICE_CONFIG_DESCRIPTION, &description) == FALSE) {
        ThrowGuardServiceError("described", GetLastError());
    }
    SetRecovery(service.Get());
}

bool RemoveGuardService()
{
    const UniqueServiceHandle service = OpenGuardService(DELETE, "opened");
    if (!service) {
        return false;
    }
    if (DeleteService(service.Get()) == FALSE) {
        const DWORD error = GetLastError();
        if (error != ERROR_SERVICE_MARKED_FOR_DELETE) {
            ThrowGuardServiceError("removed", error);
        }
        return false;
    }
    return true;
}

GuardStart StartGuardService()
{
    const UniqueServiceHandle service =
        OpenGuardService(SERVICE_START | SERVICE_QUERY_STATUS, "opened");
    if (!service) {
        ThrowGuardServiceError("started", ERROR_SERVICE_DOES_NOT_EXIST);
    }
    if (StartServiceW(service.Get(), 0, nullptr) != FALSE) {
        return GuardStart::kStarted;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_SERVICE_ALREADY_RUNNING) {
        ThrowGuardServiceError("started", error);
    }
    SERVICE_STATUS status{};
    // A service that has stopped since the answer can be started by the next try.
    return QueryServiceStatus(service.Get(), &status) != FALSE &&
                   (status.dwCurrentState == SERVICE_STOP_PENDING ||
                    status.dwCurrentState == SERVICE_STOPPED)
               ? GuardStart::kEnding
               : GuardStart::kRunsAlready;
}

} // namespace vqrx::client::v0
