#pragma once

#include <string>
#include <vector>

namespace vqrx::test {

/// Splits a command line by the documented rules of CommandLineToArgvW:
/// - A program name that begins with a quote ends at the next quote; another one ends at the next
///   blank. Backslashes in it have no meaning.
/// - Blanks outside quotes separate arguments.
/// - 2n backslashes and a quote are n backslashes, and the quote opens or closes.
/// - 2n + 1 backslashes and a quote are n backslashes and a quote character.
/// - Two quotes inside quotes are a quote character.
/// @param commandLine  not empty
[[nodiscard]] std::vector<std::string> SplitCommandLine(const std::string& commandLine);

} // namespace vqrx::test
