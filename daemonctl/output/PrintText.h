#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Writes lines to standard output at once. A console shows every character; a file or a pipe
/// receives UTF-8. If the lines are lost, sets the badbit of std::cout, which FinishOutput reports.
/// @param utf8  whole lines
void PrintText(const std::string& utf8);

} // namespace vqrx::client::v0
