#include "installation/InstallationPaths.h"

namespace vqrx::system::installation::v1 {
namespace {

constexpr const char* kAppFolder = "\\App";
constexpr const char* kLogFolder = "\\Logs";
constexpr const char* kLogFile = "\\DaemonManager.log";

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

} // namespace vqrx::system::installation::v1
