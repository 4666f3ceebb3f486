#include "DaemonArguments.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// Returns how many arguments an option of "launch" or "attach" takes, itself included; 0: it is
// none.
std::size_t CountOfOption(const std::string& argument, bool launches)
{
    if (argument == "--raw" || (launches && argument.starts_with("--wait="))) {
        return 1;
    }
    return launches && argument == "--wait" ? 2 : 0;
}

// Returns how many arguments belong to this program.
std::size_t CountOfOurs(const std::vector<std::string>& arguments)
{
    constexpr std::size_t command = 1;
    std::size_t subject = 2;
    if (arguments.size() <= command ||
        (arguments[command] != "launch" && arguments[command] != "attach")) {
        return arguments.size();
    }
    const bool launches = arguments[command] == "launch";
    while (subject < arguments.size()) {
        const std::size_t count = CountOfOption(arguments[subject], launches);
        if (count == 0) {
            break;
        }
        subject += count;
    }
    if (subject >= arguments.size()) {
        return arguments.size();
    }
    if (arguments[subject] == "--") {
        ++subject;
    } else if (arguments[subject].starts_with('-')) {
        return arguments.size();
    }
    return subject < arguments.size() ? subject + 1 : arguments.size();
}

} // namespace

CommandLine SplitCommandLine(std::vector<std::string> arguments)
{
    const auto split =
        std::next(arguments.begin(), static_cast<std::ptrdiff_t>(CountOfOurs(arguments)));
    CommandLine line;
    line.daemons.assign(std::make_move_iterator(split), std::make_move_iterator(arguments.end()));
    arguments.erase(split, arguments.end());
    line.ours = std::move(arguments);
    return line;
}

std::vector<std::string> WithoutHelpCommand(std::vector<std::string> arguments)
{
    constexpr std::size_t command = 1;
    if (arguments.size() > command && arguments[command] == "help") {
        arguments.erase(std::next(arguments.begin(), command));
        arguments.resize(std::min<std::size_t>(arguments.size(), command + 1));
        arguments.emplace_back("--help");
    }
    return arguments;
}

} // namespace vqrx::client::v0
