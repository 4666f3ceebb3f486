#include "installation/InstallationPaths.h"

namespace vqrx::system::installation::v1 {
namespace {

constexpr const char* kAppFolder = "\\App";
constexpr const char* kLogFolder = "\\Logs";
constexpr const char* kLogFile = "\\DaemonManager.log";
constexpr const char* kGuardLogFile = "\\DaemonGuard.log";
constexpr const char* kGuardLockFile = "\\DaemonGuard.lock";
constexpr const char* kHandOverLockFile = "\\DaemonManager.lock";
constexpr const char* kDumpFile = "\\DaemonManager.dmp";
constexpr const char* kFleetFile = "\\fleet.txt";

} // namespace

std::string RootFromPathname(const std::string& pathname)
{
    return pathname.substr(0, pathname.find(kAppFolder));
}

std::string AppFolder(const std::string& root)
{
    return root + kAppFolder;
}

std::string LogFolder(const std::string& root)
{
    return root + kLogFolder;
}

std::string LogFile(const std::string& root)
{
    return LogFolder(root) + kLogFile;
}

std::string GuardLogFile(const std::string& root)
{
    return LogFolder(root) + kGuardLogFile;
}

std::string GuardLockFile(const std::string& root)
{
    return LogFolder(root) + kGuardLockFile;
}

std::string HandOverLockFile(const std::string& root)
{
    return LogFolder(root) + kHandOverLockFile;
}

std::string DumpFile(const std::string& root)
{
    return LogFolder(root) + kDumpFile;
}

std::string DefaultFleetFile(const std::string& root)
{
    return AppFolder(root) + kFleetFile;
}

} // namespace vqrx::system::installation::v1
