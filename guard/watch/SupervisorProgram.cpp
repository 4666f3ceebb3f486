#include "SupervisorProgram.h"

#include "ProcessFacts.h"
#include "ProcessList.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "win32/FileTime.h"

#include <set>
#include <stdexcept>
#include <vector>

namespace vqrx::guard::v0 {
namespace {

namespace win32 = system::win32::v1;

constexpr DWORD kTerminationPatienceMs = 10000;
constexpr DWORD kUnreadableCode = 0xFFFFFFFF;
constexpr DWORD kAccess = SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION |
                          PROCESS_VM_READ | PROCESS_DUP_HANDLE;

// In milliseconds since 1970, UTC; 0: not known, or not yet.
struct ProcessTimes {
    std::int64_t createdMs = 0;
    std::int64_t endedMs = 0;
};

ProcessTimes TimesOf(HANDLE process) noexcept
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    return GetProcessTimes(process, &created, &ended, &kernel, &user) != FALSE
               ? ProcessTimes{win32::UnixMilliseconds(created), win32::UnixMilliseconds(ended)}
               : ProcessTimes();
}

// Everybody may run the installed program. A guard that watched the process of a user without
// rights would start no supervisor as long as that process runs.
struct Strangers {
    std::set<DWORD> others; // a user runs them who is not expected to run the supervisor
    std::set<DWORD> hidden; // Windows does not show who runs them
};

Strangers FindStrangers()
{
    Strangers found;
    for (const daemon_manager::SupervisorProcess& process :
         daemon_manager::IdentifySupervisor().processes) {
        if (!process.userKnown) {
            found.hidden.insert(process.processId);
        } else if (!process.expectedUser) {
            found.others.insert(process.processId);
        }
    }
    return found;
}

} // namespace

std::optional<SupervisorProgram> FindSupervisor(const std::string& program)
{
    const Strangers strangers = FindStrangers();
    std::optional<SupervisorProgram> youngest;
    for (const client::v0::ImageFacts& image :
         client::v0::ProcessesOfImage(daemon_manager::kSupervisorProgram)) {
        if (strangers.others.contains(image.processId) ||
            (!image.path.empty() && !client::v0::IsSameFile(image.path, program))) {
            continue;
        }
        win32::UniqueKernelHandle process(OpenProcess(kAccess, FALSE, image.processId));
        if (!process) {
            const DWORD error = GetLastError();
            if (error == ERROR_INVALID_PARAMETER || image.path.empty()) {
                continue; // it has ended since, or it is somebody else's program of this name
            }
            throw std::runtime_error("process " + std::to_string(image.processId) +
                                     " of the supervisor cannot be opened: error " +
                                     std::to_string(error));
        }
        // Whoever owns a process may let everybody open it, and hide who runs it.
        if (strangers.hidden.contains(image.processId) ||
            WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0) {
            continue;
        }
        SupervisorProgram found{std::move(process), image.processId, 0};
        found.createdMs = TimesOf(found.process.Get()).createdMs;
        if (!youngest || found.createdMs >= youngest->createdMs) {
            youngest = std::move(found);
        }
    }
    return youngest;
}

SupervisorProgram StartSupervisor(const std::string& program, bool showConsole)
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    const std::wstring path = client::v0::Wide(program);
    std::wstring commandLine = L"\"" + path + L"\"";
    if (CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                       showConsole ? CREATE_NEW_CONSOLE : CREATE_NO_WINDOW, nullptr, nullptr,
                       &startup, &started) == FALSE) {
        const DWORD error = GetLastError();
        throw std::runtime_error(program + " cannot be started: error " + std::to_string(error));
    }
    const win32::UniqueKernelHandle primaryThread(started.hThread); // only to close it
    SupervisorProgram supervisor{win32::UniqueKernelHandle(started.hProcess), started.dwProcessId,
                                 0};
    supervisor.createdMs = TimesOf(supervisor.process.Get()).createdMs;
    return supervisor;
}

std::optional<std::uint32_t> OtherSessionOf(const SupervisorProgram& supervisor)
{
    DWORD session = 0;
    DWORD own = 0;
    if (ProcessIdToSessionId(supervisor.processId, &session) == FALSE ||
        ProcessIdToSessionId(GetCurrentProcessId(), &own) == FALSE || session == own) {
        return std::nullopt;
    }
    return session;
}

bool HasEnded(const SupervisorProgram& supervisor) noexcept
{
    return WaitForSingleObject(supervisor.process.Get(), 0) == WAIT_OBJECT_0;
}

std::int64_t EndedMs(const SupervisorProgram& supervisor) noexcept
{
    return TimesOf(supervisor.process.Get()).endedMs;
}

std::string NameOf(const SupervisorProgram& supervisor)
{
    return "process " + std::to_string(supervisor.processId);
}

bool TerminateSupervisor(const SupervisorProgram& supervisor) noexcept
{
    TerminateProcess(supervisor.process.Get(), 1); // a process that ends just now refuses
    return WaitForSingleObject(supervisor.process.Get(), kTerminationPatienceMs) == WAIT_OBJECT_0;
}

std::uint32_t ExitCodeOf(const SupervisorProgram& supervisor) noexcept
{
    DWORD code = 0;
    return GetExitCodeProcess(supervisor.process.Get(), &code) != FALSE ? code : kUnreadableCode;
}

} // namespace vqrx::guard::v0
