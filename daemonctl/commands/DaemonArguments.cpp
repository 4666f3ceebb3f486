#include "DaemonArguments.h"

#include <cstddef>
#include <iterator>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// Returns how many arguments belong to this program.
std::size_t CountOfOurs(const std::vector<std::string>& arguments)
{
    constexpr std::size_t command = 1;
    std::size_t subject = 2;
    if (arguments.size() <= subject ||
        (arguments[command] != "launch" && arguments[command] != "attach")) {
        return arguments.size();
    }
    while (subject < arguments.size() && arguments[subject] == "--raw") {
        ++subject;
    }
    if (subject == arguments.size()) {
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

} // namespace vqrx::client::v0
