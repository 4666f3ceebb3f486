#include "UsageError.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {
namespace {

struct OtherWord {
    std::string_view word;
    std::string_view command; // the command that does what the word means elsewhere
    std::string_view advice;
};

constexpr std::array<OtherWord, 4> kOtherWords = {{
    {"start", "launch", "To start a program and keep it running: daemonctl launch PATH [ARG...]"},
    {"kill", "stop", "To end a daemon and its process: daemonctl stop ID"},
    {"shutdown", "exit", "To end the supervisor: daemonctl exit"},
    {"quit", "exit", "To end the supervisor: daemonctl exit"},
}};

constexpr std::size_t kMostMistakes = 2; // letters by which a mistyped command may differ

// Counts the letters to insert, remove or replace that turn one word into the other.
std::size_t Distance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t replaced = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

bool HasCommand(const CLI::App& app, std::string_view name)
{
    const std::vector<std::string> names = CommandNames(app);
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Advises what to type in place of an unknown command; empty if nothing is similar.
std::string Advice(const CLI::App& app, const std::string& unknown)
{
    for (const OtherWord& other : kOtherWords) {
        if (other.word == unknown && HasCommand(app, other.command)) {
            return std::string(other.advice) + "\n";
        }
    }
    std::string best;
    std::size_t least = std::min(kMostMistakes, unknown.size() / 2) + 1;
    for (const std::string& name : CommandNames(app)) {
        const std::size_t distance = Distance(unknown, name);
        if (distance < least) {
            least = distance;
            best = name;
        }
    }
    return best.empty() ? "" : "Did you mean: " + app.get_name() + " " + best + "\n";
}

} // namespace

std::vector<std::string> CommandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* const command :
         app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

// For an unknown command the message of the library says only that a command is required.
std::string UsageError(const CLI::App* app, const CLI::Error& error)
{
    const std::vector<std::string> unknown = app->remaining();
    if (error.get_name() == "RequiredError" && app->get_subcommands().empty() && !unknown.empty()) {
        return "There is no command \"" + unknown.front() + "\".\n" +
               Advice(*app, unknown.front()) + "For all commands: " + app->get_name() + " --help\n";
    }
    if (error.get_name() == "RequiredError" && app->get_subcommands().empty()) {
        return "A command is missing.\nFor all commands: " + app->get_name() + " --help\n";
    }
    std::string command = app->get_name();
    for (const CLI::App* const chosen : app->get_subcommands()) {
        command += " " + chosen->get_name();
    }
    return std::string(error.what()) + "\nFor its arguments, with examples: " + command +
           " --help\n";
}

} // namespace vqrx::client::v0
