#pragma once

#include "Timeline.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What a path leads to.
enum class PathKind {
    kFile,
    kFolder,
    kMissing,
    kUnknown ///< this user may not look
};

/// Finds out what speaks against launching a program by this path. Pure except for kindOf.
/// @param path       UTF-8, as the operator gave it
/// @param appFolder  the supervisor's working folder, where it looks for a relative path; empty:
///                   not known
/// @param kindOf     gets a full path
/// @return warnings for people; empty if nothing speaks against it
[[nodiscard]] std::vector<std::string>
WarningsAboutPath(const std::string& path, const std::string& appFolder,
                  const std::function<PathKind(const std::string& fullPath)>& kindOf);

/// Finds another daemon that the supervisor watches and that has this process. Pure.
/// @param daemonId  the daemon that is not meant
[[nodiscard]] std::optional<std::uint32_t>
OtherDaemonOfProcess(const SupervisorRun& run, std::uint32_t processId, std::uint32_t daemonId);

} // namespace vqrx::client::v0
