#include "PasteableText.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// Returns whether a character keeps its meaning inside double quotes. These do not:
// - percent signs and exclamation marks: cmd.exe replaces the text between two of them,
// - a dollar sign and a backtick: PowerShell replaces the text after them,
// - some characters beyond ASCII: PowerShell takes them for quotes.
bool StaysAsItIs(char character)
{
    constexpr std::string_view kActive = "\"%!$`";
    return character >= ' ' && character <= '~' &&
           kActive.find(character) == std::string_view::npos;
}

} // namespace

std::string QuotedForPasting(std::string_view text)
{
    // A backslash before the closing quote would join the next argument.
    if (text.empty() || text.back() == '\\' ||
        !std::all_of(text.begin(), text.end(), StaysAsItIs)) {
        return {};
    }
    return '"' + std::string(text) + '"';
}

std::string AdviceFor(std::string_view command, std::string_view name, std::string_view otherwise)
{
    const std::string quoted = QuotedForPasting(name);
    return quoted.empty() ? std::string(otherwise) : std::string(command) + quoted;
}

} // namespace vqrx::client::v0
