#include "PasteableText.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// Inside double quotes the interpreter replaces what stands between percent signs or exclamation
// marks, and PowerShell what follows a dollar sign or a backtick. Beyond ASCII there are characters
// that PowerShell takes for quotes.
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

} // namespace vqrx::client::v0
