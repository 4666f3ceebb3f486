// DaemonGuard.exe keeps the supervisor running: as a Windows service, or in the session of a user.
#include "GuardProgram.h"
#include "Utf8.h"
#include "system_library/LibrarySearch.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <exception>
#include <iostream>
#include <vector>

namespace {

using namespace vqrx; // NOLINT(google-build-using-namespace): this file is a main program

constexpr int kWrongUsage = 2;
constexpr int kFailed = 4;

int Run()
{
    std::vector<std::string> words = client::v0::Utf8Arguments();
    words.erase(words.begin());
    const auto arguments = client::v0::ParseGuardArguments(words);
    if (!arguments) {
        std::cerr
            << "DaemonGuard keeps the DaemonManager supervisor running.\n"
               "Usage: DaemonGuard.exe --service | --session [--fleet FILE] [--trust]\n"
               "  --service     run as a Windows service; only Windows starts it so\n"
               "  --session     run in this session, until the supervisor ends on an order\n"
               "  --fleet FILE  launch what this file names; default: \\App\\fleet.txt, if it "
               "exists\n"
               "  --trust       believe a log and a fleet file that others than administrators may "
               "change\n"
               "To start the guard with Windows: daemonctl autostart install\n";
        return kWrongUsage;
    }
    if (arguments->mode == client::v0::GuardMode::kService) {
        return guard::v0::RunAsService(*arguments);
    }
    const system::win32::v1::UniqueKernelHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    guard::v0::RunGuard(*arguments, stop.Get(), {}, {});
    return 0;
}

} // namespace

int main()
{
    cpp_utils::system_library::v1::SearchLibrariesInSystemFolder();
    try {
        return Run();
    } catch (const std::exception& exception) {
        std::cerr << "DaemonGuard: " << exception.what() << std::endl;
    } catch (...) {
        std::cerr << "DaemonGuard: an error without a description" << std::endl;
    }
    return kFailed;
}
