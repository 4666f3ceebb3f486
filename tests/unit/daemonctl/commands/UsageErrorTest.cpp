#include "UsageError.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

std::string Said(std::vector<std::string> argumentsFromTheLast)
{
    CLI::App app("", "program");
    app.require_subcommand(1);
    app.failure_message(client::v0::UsageError);
    app.add_subcommand("stop", "")->add_option("ID")->required();
    std::ostringstream out;
    std::ostringstream err;
    try {
        app.parse(argumentsFromTheLast);
    } catch (const CLI::ParseError& error) {
        app.exit(error, out, err);
    }
    return err.str();
}

} // namespace

TEST(UsageError, of_an_unknown_command_names_it)
{
    EXPECT_EQ("There is no command \"frobnicate\".\nRun with --help for more information.\n",
              Said({"3", "frobnicate"}));
}

TEST(UsageError, without_a_command_says_that_a_command_is_required)
{
    EXPECT_EQ("A subcommand is required\nRun with --help for more information.\n", Said({}));
}

TEST(UsageError, of_a_missing_argument_names_the_argument)
{
    EXPECT_EQ("ID is required\nRun with --help for more information.\n", Said({"stop"}));
}

} // namespace vqrx::test
