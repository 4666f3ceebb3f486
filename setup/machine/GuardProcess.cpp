#include "GuardProcess.h"

#include "ProcessFacts.h"
#include "ProcessList.h"
#include "SetupError.h"
#include "win32/UniqueHandle.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueServiceHandle;

constexpr const wchar_t* kGuardService = L"DaemonGuard";
constexpr const wchar_t* kGuardProgram = L"DaemonGuard.exe";
// The guard's service waits two minutes for the end of the supervisor.
constexpr DWORD kServiceEndMs = 150000;
constexpr DWORD kTerminationMs = 10000;

struct Guard {
    std::uint32_t processId;
    UniqueKernelHandle process;
};

// @return the processes that run the guard of this folder
std::vector<Guard> GuardsOf(const std::string& folder)
{
    std::vector<Guard> guards;
    for (const client::v0::ImageFacts& image : client::v0::ProcessesOfImage(kGuardProgram)) {
        if (!client::v0::IsSameFile(image.path, folder + "\\DaemonGuard.exe")) {
            continue;
        }
        UniqueKernelHandle process(
            OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, image.processId));
        const DWORD error = process ? ERROR_SUCCESS : GetLastError();
        if (error == ERROR_INVALID_PARAMETER) {
            continue; // it has ended since
        }
        if (error != ERROR_SUCCESS) {
            throw SetupError("The guard, process " + std::to_string(image.processId) +
                             ", cannot be opened (Windows error " + std::to_string(error) + ").");
        }
        guards.push_back({image.processId, std::move(process)});
    }
    return guards;
}

bool Ends(const Guard& guard, DWORD limitMs)
{
    return WaitForSingleObject(guard.process.Get(), limitMs) == WAIT_OBJECT_0;
}

// @return whether this process is that of the service, and the service was told to stop
bool StopService(std::uint32_t processId)
{
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        OpenServiceW(manager.Get(), kGuardService, SERVICE_QUERY_STATUS | SERVICE_STOP));
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    SERVICE_STATUS answer{};
    return service &&
           QueryServiceStatusEx(service.Get(), SC_STATUS_PROCESS_INFO,
                                reinterpret_cast<BYTE*>(&status), sizeof status,
                                &needed) != FALSE &&
           status.dwProcessId == processId &&
           ControlService(service.Get(), SERVICE_CONTROL_STOP, &answer) != FALSE;
}

} // namespace

bool EndGuards(const std::string& folder, DWORD patienceMs)
{
    bool hadToBeEnded = false;
    const ULONGLONG begin = GetTickCount64();
    for (const Guard& guard : GuardsOf(folder)) {
        const ULONGLONG passed = GetTickCount64() - begin;
        if (Ends(guard, passed < patienceMs ? patienceMs - static_cast<DWORD>(passed) : 0)) {
            continue;
        }
        hadToBeEnded = true;
        if (StopService(guard.processId) && Ends(guard, kServiceEndMs)) {
            continue;
        }
        TerminateProcess(guard.process.Get(), 1); // a process that ends just now refuses
        if (!Ends(guard, kTerminationMs)) {
            throw SetupError("The guard, process " + std::to_string(guard.processId) +
                             ", could not be ended.");
        }
    }
    return hadToBeEnded;
}

} // namespace vqrx::setup::v0
