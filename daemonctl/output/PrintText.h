#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Writes lines to standard output, at once: to a console in its own characters, else as they are.
/// What cannot be written leaves std::cout bad, for FinishOutput.
/// @param utf8  whole lines
void PrintText(const std::string& utf8);

} // namespace vqrx::client::v0
