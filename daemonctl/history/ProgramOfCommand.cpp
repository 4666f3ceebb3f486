#include "ProgramOfCommand.h"

#include "AsciiCase.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace vqrx::client::v0 {
namespace {

// Returns the length of the path at the beginning of a command.
std::size_t EndOfPath(const std::string& command)
{
    constexpr std::string_view extension = ".exe ";
    const std::size_t found = (LowerAscii(command) + " ").find(extension);
    return found == std::string::npos ? std::min(command.find(' '), command.size())
                                      : found + extension.size() - 1;
}

} // namespace

std::string WithoutFolder(const std::string& command)
{
    const std::size_t separator = command.substr(0, EndOfPath(command)).rfind('\\');
    return command.substr(separator + 1); // npos + 1 is 0
}

std::string ProgramNameOf(const std::string& command)
{
    return WithoutFolder(ProgramPathOf(command));
}

std::string ProgramPathOf(const std::string& command)
{
    return command.substr(0, EndOfPath(command));
}

} // namespace vqrx::client::v0
