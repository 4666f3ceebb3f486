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
    // CreateProcess may write to its command line, so the text is not const.
    std::string commandLine = BuildCommandLine(executablePath, arguments);
    const win32::v1::NoErrorBoxes noErrorBoxes; // nobody sits at the appliance to answer a box
    if (CreateProcessA(executablePath.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                       CREATE_NEW_CONSOLE, nullptr, nullptr, &startup, &started) == FALSE) {
        return {};
    }
    const UniqueKernelHandle primaryThread(started.hThread); // only to close it
    return UniqueKernelHandle(started.hProcess);
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
