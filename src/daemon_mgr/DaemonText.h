#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Path and arguments, each followed by a blank.
std::string DescribeCommand(const std::string& executablePath,
                            const std::vector<std::string>& arguments);

/// "DaemonId(1) PId(2) : " and the command; the command alone when there has been no process (0).
std::string DescribeDaemon(std::uint32_t daemonId, std::uint32_t processId,
                           const std::string& command);

/// "Exception caught in " service ": " and the name of the exit code. The service's name is empty
/// for a daemon that is none.
std::string DescribeEnd(const std::string& serviceName, std::uint32_t exitCode);

} // namespace vqrx::system::daemon::daemon_mgr::v0
