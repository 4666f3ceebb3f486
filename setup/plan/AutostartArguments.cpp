#include "AutostartArguments.h"

namespace vqrx::setup::v0 {

std::vector<std::string> AutostartArguments(const SetupOptions& options,
                                            const std::string& formerFleet, bool formerTrust)
{
    if (options.autostart == "none") {
        return {"remove"};
    }
    std::vector<std::string> arguments{"install", "--" + options.autostart};
    if (!formerFleet.empty()) {
        arguments.emplace_back("--fleet");
        arguments.push_back(formerFleet);
    }
    if (options.noStart) {
        arguments.emplace_back("--no-start");
    }
    if (options.allowWeak || formerTrust) {
        arguments.emplace_back("--trust");
    }
    return arguments;
}

} // namespace vqrx::setup::v0
