#pragma once

#include <string>
#include <vector>

namespace vqrx::test {

/// Splits a command line as CommandLineToArgvW is documented to: the program's name runs to the
/// next quote when it begins with one, to the next blank otherwise, and knows no backslash; of the
/// arguments, blanks separate outside quotes, 2n backslashes and a quote are n backslashes and a
/// quote that opens or closes, 2n+1 and a quote are n and the quote itself, and two quotes within
/// quotes are one quote. Not for an empty command line.
std::vector<std::string> SplitCommandLine(const std::string& commandLine);

} // namespace vqrx::test
