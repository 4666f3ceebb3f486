// Fuzzer for BuildCommandLine: a child receives the program and the arguments of the request, if
// the form of the command line can express them.
#include "Check.h"
#include "CommandLine.h"
#include "SplitCommandLine.h"

#include <algorithm>
#include <cstdint>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::BuildCommandLine;
using Words = std::vector<std::string>;

bool Contains(const std::string& text, char character)
{
    return text.find(character) != std::string::npos;
}

// The command line cannot express these arguments: BuildCommandLine escapes no quote, puts no
// quotes around an empty argument or around tabs, and a backslash before the closing quote escapes
// this quote.
bool CanBePassed(const std::string& argument)
{
    if (argument.empty() || Contains(argument, '"')) {
        return false;
    }
    return Contains(argument, ' ') ? argument.back() != '\\' : !Contains(argument, '\t');
}

bool CanBeStarted(const std::string& program)
{
    return !program.empty() && !Contains(program, '"') &&
           (Contains(program, ' ') || !Contains(program, '\t'));
}

// Splits the input at each NUL. The first word is the program, the others are the arguments.
Words WordsOf(const std::string& input)
{
    Words words(1);
    for (const char character : input) {
        if (character == '\0') {
            words.emplace_back();
        } else {
            words.back() += character;
        }
    }
    return words;
}

std::string Expected(const Words& words)
{
    std::string text;
    for (const std::string& word : words) {
        const std::string quote = Contains(word, ' ') ? "\"" : "";
        text += quote + word + quote + " ";
    }
    return text;
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vqrx::test;
    const Words words = WordsOf(std::string(data, data + size));
    const Words arguments(words.begin() + 1, words.end());
    const std::string commandLine = BuildCommandLine(words[0], arguments);
    FUZZ_CHECK(commandLine == Expected(words));
    const Words seen = SplitCommandLine(commandLine);
    if (CanBeStarted(words[0])) {
        FUZZ_CHECK(seen[0] == words[0]);
        if (std::all_of(arguments.begin(), arguments.end(), CanBePassed)) {
            FUZZ_CHECK(seen == words);
        }
    }
    return 0;
}
