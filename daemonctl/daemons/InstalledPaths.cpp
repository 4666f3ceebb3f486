#include "InstalledPaths.h"

#include "TextEncoding.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"

namespace vqrx::client::v0 {
namespace {

namespace installation = system::installation::v1;

std::string FirmwareRoot()
{
    std::string root;
    if (!installation::TryGetFirmwareRoot(root)) {
        throw FirmwareRootUnknown("the registry does not name the firmware root; see daemonctl "
                                  "doctor (log and report: name the log file with --file)");
    }
    return root;
}

} // namespace

std::string DefaultLogPath()
{
    return AnsiToUtf8(installation::LogFile(FirmwareRoot()));
}

std::string DefaultGuardLogPath()
{
    return AnsiToUtf8(installation::GuardLogFile(FirmwareRoot()));
}

std::string HandOverLockPath()
{
    return AnsiToUtf8(installation::HandOverLockFile(FirmwareRoot()));
}

std::string DefaultAppFolder()
{
    return AnsiToUtf8(installation::AppFolder(FirmwareRoot()));
}

std::string DefaultFleetPath()
{
    return AnsiToUtf8(installation::DefaultFleetFile(FirmwareRoot()));
}

} // namespace vqrx::client::v0
