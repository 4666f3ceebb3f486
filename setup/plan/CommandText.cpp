#include "CommandText.h"

#include <cstddef>

namespace vqrx::setup::v0 {
namespace {

// Backslashes count as escapes only if a quotation mark follows them.
std::string Quoted(const std::string& argument)
{
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char letter : argument) {
        if (letter == '"') {
            text.append(backslashes + 1, '\\');
        }
        backslashes = letter == '\\' ? backslashes + 1 : 0;
        text += letter;
    }
    return text.append(backslashes, '\\') + '"';
}

} // namespace

std::string CommandText(const std::string& program, const std::vector<std::string>& arguments)
{
    std::string text = Quoted(program);
    for (const std::string& argument : arguments) {
        text += " " + Quoted(argument);
    }
    return text;
}

} // namespace vqrx::setup::v0
