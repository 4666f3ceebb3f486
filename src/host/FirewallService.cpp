#include "FirewallService.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace vqrx::host::v0 {
namespace {

using log::i_logger::v0::ILogger;
using system::win32::v1::UniqueServiceHandle;

constexpr DWORD kServiceConfigBuffer =
    8192; // the most that the call ever needs, says its reference
constexpr std::uint32_t kLongestSleep = 24 * 60 * 60;

UniqueServiceHandle OpenFirewallService(SC_HANDLE manager)
{
    constexpr DWORD access = SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS;
    UniqueServiceHandle current(OpenServiceA(manager, "MpsSvc", access));
    UniqueServiceHandle older(OpenServiceA(manager, "SharedAccess", access));
    return current ? std::move(current) : std::move(older);
}

std::optional<DWORD> StartTypeOf(SC_HANDLE service)
{
    std::vector<std::byte> buffer(kServiceConfigBuffer);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
    DWORD needed = 0;
    if (QueryServiceConfigA(service, config, kServiceConfigBuffer, &needed) == FALSE) {
        return std::nullopt;
    }
    return config->dwStartType;
}

bool WaitUntilRunning(SC_HANDLE service, ILogger* logger, const SleepSeconds& sleep)
{
    for (DoublingPause pause;; pause.Double()) {
        SERVICE_STATUS status{};
        if (QueryServiceStatus(service, &status) == FALSE) {
            logger->Log(0, "Firewall: Could not query service status");
            return false;
        }
        if (status.dwCurrentState == SERVICE_RUNNING) {
            return true;
        }
        logger->Log(0, "Firewall: Current status code %d", static_cast<int>(status.dwCurrentState));
        logger->Log(0, "Firewall: Waiting %d s for the service to be running.",
                    static_cast<int>(pause.Seconds()));
        sleep(pause.Seconds());
    }
}

} // namespace

void SleepForSeconds(std::uint32_t seconds)
{
    while (seconds != 0) { // in pieces: Sleep takes milliseconds in 32 bits
        const std::uint32_t piece = std::min(seconds, kLongestSleep);
        Sleep(piece * 1000);
        seconds -= piece;
    }
}

bool WaitForFirewallService(ILogger* logger, const SleepSeconds& sleep)
{
    const UniqueServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (!manager) {
        logger->Log(0, "Firewall: Could not connect to service manager");
        return false;
    }
    const UniqueServiceHandle service = OpenFirewallService(manager.Get());
    if (!service) {
        const DWORD error = GetLastError(); // kept by the owners' clean-up
        logger->Log(0, "Firewall: Could not open service (%d)", static_cast<int>(error));
        return false;
    }
    const std::optional<DWORD> startType = StartTypeOf(service.Get());
    if (!startType) {
        logger->Log(0, "Firewall: Could not query service config");
        return false;
    }
    if (*startType == SERVICE_DISABLED) {
        logger->Log(1, "Firewall: Service is disabled.");
        return false;
    }
    return WaitUntilRunning(service.Get(), logger, sleep);
}

} // namespace vqrx::host::v0
