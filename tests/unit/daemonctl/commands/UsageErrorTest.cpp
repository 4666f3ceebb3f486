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
    app.add_subcommand("launch", "");
    app.add_subcommand("report", "");
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
    EXPECT_EQ("There is no command \"frobnicate\".\nFor all commands: program --help\n",
              Said({"3", "frobnicate"}));
}

TEST(UsageError, of_a_mistyped_command_names_the_most_similar_one)
{
    EXPECT_EQ("There is no command \"lanch\".\nDid you mean: program launch\n"
              "For all commands: program --help\n",
              Said({"lanch"}));
    EXPECT_EQ("There is no command \"reprot\".\nDid you mean: program report\n"
              "For all commands: program --help\n",
              Said({"reprot"}));
    EXPECT_EQ("There is no command \"x\".\nFor all commands: program --help\n", Said({"x"}));
}

TEST(UsageError, of_a_word_of_other_programs_names_the_command_that_does_this)
{
    EXPECT_EQ("There is no command \"kill\".\n"
              "To end a daemon and its process: daemonctl stop ID\n"
              "For all commands: program --help\n",
              Said({"3", "kill"}));
    EXPECT_EQ("There is no command \"start\".\n"
              "To start a program and keep it running: daemonctl launch PATH [ARG...]\n"
              "For all commands: program --help\n",
              Said({"start"}));
    // A program without the command does not advise it.
    EXPECT_EQ("There is no command \"quit\".\nFor all commands: program --help\n", Said({"quit"}));
}

TEST(UsageError, without_a_command_says_that_a_command_is_required)
{
    EXPECT_EQ("A command is missing.\nFor all commands: program --help\n", Said({}));
}

TEST(UsageError, of_a_missing_argument_names_the_argument_and_the_help_of_the_command)
{
    EXPECT_EQ("ID is required\nFor its arguments, with examples: program stop --help\n",
              Said({"stop"}));
}

} // namespace vqrx::test
