#include "GuardProcess.h"

#include "GuardArguments.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "SetupError.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueServiceHandle;

// The guard's service waits two minutes for the end of the supervisor.
constexpr DWORD kServiceEndMs = 150000;
constexpr DWORD kAskServiceAgainMs = 100;

struct Guard {
    std::uint32_t processId;
    UniqueKernelHandle process;
};

// Returns whether a process that is open now is not the one that was listed: another process may
// have got the id in between.
bool IsAnother(std::uint32_t processId, const std::string& program)
{
    const client::v0::ProcessFacts facts = client::v0::ReadProcessFacts(processId);
    return facts.state == client::v0::ProcessFacts::State::kRunning &&
           !client::v0::IsSameFile(facts.image, program);
}

// @return the processes that run the guard of this folder
std::vector<Guard> GuardsOf(const std::string& folder)
{
    std::vector<Guard> guards;
    const std::string program = folder + "\\" + client::v0::Utf8(client::v0::kGuardProgram);
    for (const client::v0::ImageFacts& image :
         client::v0::ProcessesOfImage(client::v0::kGuardProgram)) {
        if (!client::v0::IsSameFile(image.path, program)) {
            continue;
        }
        UniqueKernelHandle process(
            OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, image.processId));
        const DWORD error = process ? ERROR_SUCCESS : GetLastError();
        if (process && IsAnother(image.processId, program)) {
            continue;
        }
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

// @return the state of the service, if this process is its process; otherwise, or if there is no
// service, 0
DWORD StateIfProcessOf(const UniqueServiceHandle& service, std::uint32_t processId)
{
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    const bool isKnown =
        QueryServiceStatusEx(service.Get(), SC_STATUS_PROCESS_INFO,
                             reinterpret_cast<BYTE*>(&status), sizeof status, &needed) != FALSE;
    return isKnown && status.dwProcessId == processId ? status.dwCurrentState : 0;
}

// Asks the service manager to stop the service of a guard. A service that is just starting takes no
// request, so it is asked again until it has started.
// @return whether this guard is the service, and was told to stop or has ended
bool StopService(const Guard& guard, DWORD limitMs)
{
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        OpenServiceW(manager.Get(), client::v0::kGuardName, SERVICE_QUERY_STATUS | SERVICE_STOP));
    const ULONGLONG begin = GetTickCount64();
    for (DWORD state = StateIfProcessOf(service, guard.processId); state != 0;
         state = StateIfProcessOf(service, guard.processId)) {
        SERVICE_STATUS answer{};
        if (state == SERVICE_STOP_PENDING ||
            ControlService(service.Get(), SERVICE_CONTROL_STOP, &answer) != FALSE) {
            return true;
        }
        // Wine and Windows give different errors here, so the state decides.
        if (state != SERVICE_START_PENDING || GetTickCount64() - begin >= limitMs) {
            return false;
        }
        if (Ends(guard, kAskServiceAgainMs)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool EndGuards(const std::string& folder, const GuardLimits& limits, bool& hasEnded)
{
    bool hadToBeEnded = false;
    const ULONGLONG begin = GetTickCount64();
    for (const Guard& guard : GuardsOf(folder)) {
        const ULONGLONG passed = GetTickCount64() - begin;
        if (Ends(guard,
                 passed < limits.patienceMs ? limits.patienceMs - static_cast<DWORD>(passed) : 0)) {
            continue;
        }
        hadToBeEnded = true;
        hasEnded = true;
        if (StopService(guard, limits.stopRequestMs) && Ends(guard, kServiceEndMs)) {
            continue;
        }
        TerminateProcess(guard.process.Get(), 1); // a process that ends just now refuses
        if (!Ends(guard, limits.terminationMs)) {
            throw SetupError("The guard, process " + std::to_string(guard.processId) +
                             ", could not be ended.");
        }
    }
    return hadToBeEnded;
}

std::vector<FormerProcess> FindGuardsOfSessions(const std::string& folder)
{
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        OpenServiceW(manager.Get(), client::v0::kGuardName, SERVICE_QUERY_STATUS));
    const std::string program = folder + "\\" + client::v0::Utf8(client::v0::kGuardProgram);
    std::vector<FormerProcess> found;
    for (const Guard& guard : GuardsOf(folder)) { // these stay open, so their ids are theirs
        if (StateIfProcessOf(service, guard.processId) == 0) {
            found.emplace_back(guard.processId, program);
        }
    }
    return found;
}

void StopGuardService(const std::string& folder, bool& hasEnded)
{
    for (const Guard& guard : GuardsOf(folder)) {
        if (StopService(guard, GuardLimits().stopRequestMs)) {
            hasEnded = true;
            static_cast<void>(
                Ends(guard, kServiceEndMs)); // EndGuards() deals with one that runs on
        }
    }
}

} // namespace vqrx::setup::v0
