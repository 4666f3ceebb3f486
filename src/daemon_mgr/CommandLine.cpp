#include "CommandLine.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

void Append(std::string& commandLine, const std::string& part)
{
    if (part.find(' ') != std::string::npos) {
        commandLine.append("\"").append(part).append("\"");
    } else {
        commandLine.append(part);
    }
    commandLine.append(" ");
}

} // namespace

std::string BuildCommandLine(const std::string& executablePath,
                             const std::vector<std::string>& arguments)
{
    std::string commandLine;
    Append(commandLine, executablePath);
    for (const std::string& argument : arguments) {
        Append(commandLine, argument);
    }
    return commandLine;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
