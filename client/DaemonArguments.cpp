#include "DaemonArguments.h"

#include <cstddef>

namespace vqrx::client::v0 {

std::vector<std::string> ProtectDaemonArguments(std::vector<std::string> arguments)
{
    constexpr std::size_t command = 1;
    constexpr std::size_t subject = 2;
    if (arguments.size() <= subject + 1 ||
        (arguments[command] != "launch" && arguments[command] != "attach") ||
        arguments[subject].starts_with('-')) {
        return arguments;
    }
    arguments.insert(arguments.begin() + subject + 1, "--");
    return arguments;
}

} // namespace vqrx::client::v0
