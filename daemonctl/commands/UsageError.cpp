#include "UsageError.h"

#include <vector>

namespace vqrx::client::v0 {

// For an unknown command the message of the library says only that a command is required.
std::string UsageError(const CLI::App* app, const CLI::Error& error)
{
    const std::vector<std::string> unknown = app->remaining();
    if (error.get_name() == "RequiredError" && app->get_subcommands().empty() && !unknown.empty()) {
        return "There is no command \"" + unknown.front() +
               "\".\nRun with --help for more information.\n";
    }
    return CLI::FailureMessage::simple(app, error);
}

} // namespace vqrx::client::v0
