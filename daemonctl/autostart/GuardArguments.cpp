#include "GuardArguments.h"

#include <cstddef>

namespace vqrx::client::v0 {
namespace {

// Splits a command line at its blanks. Double quotes keep a part together; a path has none inside.
std::vector<std::string> WordsOf(const std::string& commandLine)
{
    std::vector<std::string> words;
    bool isQuoted = false;
    bool isInWord = false;
    for (const char character : commandLine) {
        if (character == '"') {
            isQuoted = !isQuoted;
        }
        if ((character == ' ' || character == '\t') && !isQuoted) {
            isInWord = false;
            continue;
        }
        if (!isInWord) {
            words.emplace_back();
            isInWord = true;
        }
        if (character != '"') {
            words.back() += character;
        }
    }
    return words;
}

} // namespace

std::optional<GuardArguments> ParseGuardArguments(const std::vector<std::string>& arguments)
{
    GuardArguments result;
    bool hasMode = false;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        const bool isService = argument == "--service";
        if (isService || argument == "--session") {
            if (hasMode) {
                return std::nullopt;
            }
            hasMode = true;
            result.mode = isService ? GuardMode::kService : GuardMode::kSession;
        } else if (argument == "--fleet" && result.fleet.empty() && index + 1 < arguments.size() &&
                   !arguments[index + 1].empty()) {
            result.fleet = arguments[++index];
        } else if (argument == "--trust" && !result.trust) {
            result.trust = true;
        } else {
            return std::nullopt;
        }
    }
    return hasMode ? std::optional(result) : std::nullopt;
}

std::string CommandLineOf(const GuardCommand& command)
{
    // Always in quotes: without them Windows would first try the part of the path before a blank.
    std::string text = '"' + command.program + '"';
    text += command.arguments.mode == GuardMode::kService ? " --service" : " --session";
    if (!command.arguments.fleet.empty()) {
        text += " --fleet \"" + command.arguments.fleet + '"';
    }
    if (command.arguments.trust) {
        text += " --trust";
    }
    return text;
}

std::optional<GuardCommand> ParseGuardCommand(const std::string& commandLine)
{
    std::vector<std::string> words = WordsOf(commandLine);
    if (words.empty()) {
        return std::nullopt;
    }
    GuardCommand command;
    command.program = words.front();
    words.erase(words.begin());
    const std::optional<GuardArguments> arguments = ParseGuardArguments(words);
    if (!arguments) {
        return std::nullopt;
    }
    command.arguments = *arguments;
    return command;
}

} // namespace vqrx::client::v0
