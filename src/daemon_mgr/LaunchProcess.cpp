#include "LaunchProcess.h"

#include "CommandLine.h"
#include "win32/NoErrorBoxes.h"

#include <windows.h>

namespace vqrx::system::daemon::daemon_mgr::v0 {

using win32::v1::UniqueKernelHandle;

UniqueKernelHandle LaunchProcess(const std::string& executablePath,
                                 const std::vector<std::string>& arguments)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    std::string commandLine =
        BuildCommandLine(executablePath, arguments); // the call may write to it
    const win32::v1::NoErrorBoxes noErrorBoxes;      // nobody is there to answer one
    if (CreateProcessA(executablePath.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                       CREATE_NEW_CONSOLE, nullptr, nullptr, &startup, &started) == FALSE) {
        return {};
    }
    const UniqueKernelHandle primaryThread(started.hThread); // closed at once
    return UniqueKernelHandle(started.hProcess);
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
