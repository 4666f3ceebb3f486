#include "Autostart.h"

#include "GuardRunValue.h"
#include "GuardServiceEntry.h"
#include "Utf8.h"
#include "file/OwnProgram.h"
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

std::string PathBesideThisProgram(const std::wstring& fileName)
{
    return Utf8(system::file::v2::PathBesideOwnProgram(fileName));
}

GuardStart StartGuard(const GuardCommand& command)
{
    if (command.arguments.mode == GuardMode::kService) {
        return StartGuardService();
    }
    StartInThisSession(command);
    return GuardStart::kStarted;
}

} // namespace vqrx::client::v0
