#include "DaemonText.h"

#include "exception_utils/ExceptionCodeName.h"

#include <sstream>

namespace vqrx::system::daemon::daemon_mgr::v0 {

std::string DescribeCommand(const std::string& executablePath,
                            const std::vector<std::string>& arguments)
{
    std::string text = executablePath + " ";
    for (const std::string& argument : arguments) {
        text.append(argument).append(" ");
    }
    return text;
}

std::string DescribeDaemon(std::uint32_t daemonId, std::uint32_t processId,
                           const std::string& command)
{
    std::ostringstream text;
    text.exceptions(std::ios::badbit); // if memory runs out: throw, do not cut the text
    if (processId != 0) {
        text << "DaemonId(" << daemonId << ") PId(" << processId << ") : ";
    }
    text << command;
    return text.str();
}

std::string DescribeEnd(const std::string& serviceName, std::uint32_t exitCode)
{
    std::ostringstream text;
    text.exceptions(std::ios::badbit); // if memory runs out: throw, do not cut the text
    text << "Exception caught in " << serviceName << ": "
         << cpp_utils::exception_utils::v1::ExceptionCodeName(exitCode);
    return text.str();
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
