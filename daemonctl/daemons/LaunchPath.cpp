#include "LaunchPath.h"

namespace vqrx::client::v0 {
namespace {

bool IsFullPath(const std::string& path)
{
    const bool hasDrive = path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
    return hasDrive || path.starts_with("\\\\") || path.starts_with("//");
}

} // namespace

std::vector<std::string>
WarningsAboutPath(const std::string& path, const std::string& appFolder,
                  const std::function<PathKind(const std::string& fullPath)>& kindOf)
{
    std::vector<std::string> warnings;
    std::string fullPath = path;
    if (!IsFullPath(path)) {
        warnings.push_back("\"" + path + "\" is no full path, so the supervisor looks for it in " +
                           (appFolder.empty() ? "its working folder" : appFolder));
        if (appFolder.empty()) {
            return warnings;
        }
        fullPath = appFolder + "\\" + path;
    }
    switch (kindOf(fullPath)) {
    case PathKind::kMissing:
        warnings.push_back(fullPath + " does not exist; the supervisor tries to start it every "
                                      "second");
        break;
    case PathKind::kFolder:
        warnings.push_back(fullPath + " is a folder, no program");
        break;
    case PathKind::kFile:
    case PathKind::kUnknown:
        break;
    }
    return warnings;
}

std::optional<std::uint32_t> OtherDaemonOfProcess(const SupervisorRun& run, std::uint32_t processId,
                                                  std::uint32_t daemonId)
{
    for (const auto& [id, daemon] : run.daemons) {
        const ProcessInterval* const running = daemon.Running();
        if (id != daemonId && daemon.IsRegistered() && running != nullptr &&
            running->processId == processId) {
            return id;
        }
    }
    return std::nullopt;
}

} // namespace vqrx::client::v0
