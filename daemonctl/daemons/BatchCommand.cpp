#include "BatchCommand.h"

#include "AsciiCase.h"

#include <string_view>

namespace vqrx::client::v0 {
namespace {

constexpr std::string_view kInterpreter = "\\cmd.exe ";

// Returns whether a text without quotes begins with the path of a batch file. The path may hold
// blanks.
bool BeginsWithBatchFile(const std::string& text)
{
    const std::string lower = LowerAscii(text) + " ";
    return lower.find(".bat ") != std::string::npos || lower.find(".cmd ") != std::string::npos;
}

} // namespace

std::optional<std::string> BatchCommandOf(const std::string& command)
{
    const std::size_t interpreter = LowerAscii(command).find(kInterpreter);
    if (interpreter == std::string::npos) {
        return std::nullopt;
    }
    std::string rest = command.substr(interpreter + kInterpreter.size());
    std::erase(rest, '"');
    while (rest.starts_with("/")) { // the switches of the interpreter, such as /s/c
        const std::size_t end = rest.find(' ');
        rest = end == std::string::npos ? std::string() : rest.substr(end + 1);
    }
    rest.erase(rest.find_last_not_of(' ') + 1); // npos + 1 is 0
    if (!BeginsWithBatchFile(rest)) {
        return std::nullopt;
    }
    return rest + " ";
}

std::string LaunchCommandOf(const DaemonStatus& daemon)
{
    return daemon.attached ? BatchCommandOf(daemon.command).value_or(daemon.command)
                           : daemon.command;
}

} // namespace vqrx::client::v0
