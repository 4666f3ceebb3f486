#include "Autostart.h"

#include "GuardRunValue.h"
#include "GuardServiceEntry.h"
#include "Utf8.h"
#include "file/OwnProgram.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <stdexcept>
#include <utility>

namespace vqrx::client::v0 {
namespace {

void StartInThisSession(const GuardCommand& command)
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    std::wstring commandLine = Wide(CommandLineOf(command));
    if (CreateProcessW(Wide(command.program).c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                       DETACHED_PROCESS, nullptr, nullptr, &startup, &started) == FALSE) {
        const DWORD error = GetLastError();
        throw std::runtime_error(command.program + " cannot be started: Windows error " +
                                 std::to_string(error));
    }
    const system::win32::v1::UniqueKernelHandle process(started.hProcess); // only to close them
    const system::win32::v1::UniqueKernelHandle thread(started.hThread);
}

// Everybody may run a program of the guard's name, and even the guard itself. But only those who
// may write to the folder of the logs can hold the guard's lock.
bool IsGuardRunning()
{
    namespace installation = system::installation::v1;
    std::string root; // ANSI code page
    if (!installation::TryGetFirmwareRoot(root)) {
        return false;
    }
    const system::win32::v1::UniqueKernelHandle lock(
        CreateFileA(installation::GuardLockFile(root).c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    0, nullptr));
    return !lock && GetLastError() == ERROR_SHARING_VIOLATION;
}

} // namespace

std::vector<AutostartEntry> ReadAutostart()
{
    std::vector<AutostartEntry> entries;
    if (auto service = ReadGuardService()) {
        entries.push_back(std::move(*service));
    }
    const std::string value = ReadGuardRunValue();
    if (!value.empty()) {
        AutostartEntry session;
        session.mode = GuardMode::kSession;
        session.commandLine = value;
        entries.push_back(std::move(session));
    }
    return entries;
}

void InstallAutostart(const GuardCommand& command)
{
    // The new entry first: if it cannot be made, the machine keeps the one that it has.
    if (command.arguments.mode == GuardMode::kService) {
        MakeGuardService(CommandLineOf(command));
        RemoveGuardRunValue();
    } else {
        WriteGuardRunValue(CommandLineOf(command));
        RemoveGuardService();
    }
}

bool RemoveAutostart()
{
    const bool wasService = RemoveGuardService();
    return RemoveGuardRunValue() || wasService;
}

std::string CommandThatEndsGuard()
{
    const auto service = ReadGuardService();
    return service && service->isRunning ? "sc stop DaemonGuard" : "daemonctl exit";
}

std::string PathBesideThisProgram(const std::wstring& fileName)
{
    return Utf8(system::file::v2::PathBesideOwnProgram(fileName));
}

GuardStart StartGuard(const GuardCommand& command)
{
    const bool isService = command.arguments.mode == GuardMode::kService;
    const auto service = ReadGuardService();
    const bool serviceRuns = service && service->isRunning;
    // The service itself tells whether it is about to stop.
    if (!(isService && serviceRuns) && (serviceRuns || IsGuardRunning())) {
        return GuardStart::kRunsAlready;
    }
    if (isService) {
        return StartGuardService();
    }
    StartInThisSession(command);
    return GuardStart::kStarted;
}

} // namespace vqrx::client::v0
