#include "FirewallService.h"

#include "win32/FirewallNames.h"
#include "win32/ServiceConfig.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace vqrx::host::v0 {
namespace {

using log::i_logger::v0::ILogger;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelWarning;
using system::win32::v1::kFirewallService;
using system::win32::v1::kOlderFirewallService;
using system::win32::v1::kServiceConfigBytes;
using system::win32::v1::UniqueServiceHandle;

constexpr std::uint32_t kLongestSleep = 24 * 60 * 60; // seconds

// @return the firewall service of newer systems, else that of older ones; empty if neither opens
UniqueServiceHandle OpenFirewallService(SC_HANDLE manager)
{
    constexpr DWORD access = SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS;
    UniqueServiceHandle newer(OpenServiceA(manager, kFirewallService, access));
    UniqueServiceHandle older(OpenServiceA(manager, kOlderFirewallService, access));
    return newer ? std::move(newer) : std::move(older);
}

std::optional<DWORD> StartTypeOf(SC_HANDLE service)
{
    std::vector<std::byte> buffer(kServiceConfigBytes);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
    DWORD needed = 0;
    if (QueryServiceConfigA(service, config, kServiceConfigBytes, &needed) == FALSE) {
        return std::nullopt;
    }
    return config->dwStartType;
}

bool WaitUntilRunning(SC_HANDLE service, ILogger* logger, const SleepSeconds& sleep)
{
    for (DoublingPause pause;; pause.Double()) {
        SERVICE_STATUS status{};
        if (QueryServiceStatus(service, &status) == FALSE) {
            logger->Log(kLevelError, "Firewall: Could not query service status");
            return false;
        }
        if (status.dwCurrentState == SERVICE_RUNNING) {
            return true;
        }
        logger->Log(kLevelError, "Firewall: Current status code %d",
                    static_cast<int>(status.dwCurrentState));
        logger->Log(kLevelError, "Firewall: Waiting %d s for the service to be running.",
                    static_cast<int>(pause.Seconds()));
        sleep(pause.Seconds());
    }
}

} // namespace

void SleepForSeconds(std::uint32_t seconds)
{
    while (seconds != 0) { // in pieces, because Sleep takes 32 bits of milliseconds
        const std::uint32_t piece = std::min(seconds, kLongestSleep);
        Sleep(piece * 1000);
        seconds -= piece;
    }
}

bool WaitForFirewallService(ILogger* logger, const SleepSeconds& sleep)
{
    const UniqueServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (!manager) {
        logger->Log(kLevelError, "Firewall: Could not connect to service manager");
        return false;
    }
    const UniqueServiceHandle service = OpenFirewallService(manager.Get());
    if (!service) {
        const DWORD error = GetLastError(); // closing the other handles has not changed it
        logger->Log(kLevelError, "Firewall: Could not open service (%d)", static_cast<int>(error));
        return false;
    }
    const std::optional<DWORD> startType = StartTypeOf(service.Get());
    if (!startType) {
        logger->Log(kLevelError, "Firewall: Could not query service config");
        return false;
    }
    if (*startType == SERVICE_DISABLED) {
        logger->Log(kLevelWarning, "Firewall: Service is disabled.");
        return false;
    }
    return WaitUntilRunning(service.Get(), logger, sleep);
}

} // namespace vqrx::host::v0
