#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The path and the arguments, each followed by a blank. @throws std::bad_alloc
[[nodiscard]] std::string DescribeCommand(const std::string& executablePath,
                                          const std::vector<std::string>& arguments);

/// "DaemonId(1) PId(2) : " and the command; the command alone if processId is 0 (never started).
/// @throws std::bad_alloc or another exception of the stream
[[nodiscard]] std::string DescribeDaemon(std::uint32_t daemonId, std::uint32_t processId,
                                         const std::string& command);

/// The log text for a process that ended: "Exception caught in " serviceName ": " and the name of
/// the exit code.
/// @param serviceName  empty for a daemon that is no Windows service
/// @throws std::bad_alloc or another exception of the stream
[[nodiscard]] std::string DescribeEnd(const std::string& serviceName, std::uint32_t exitCode);

} // namespace vqrx::system::daemon::daemon_mgr::v0
