#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Reads an unsigned number of decimal digits, and removes its leading zeros. Otherwise the library
/// that reads the command line would take 010 for 8 and 0x10 for 16.
/// @return an error message; empty if the text is such a number
[[nodiscard]] std::string ReadAsDecimal(std::string& text);

} // namespace vqrx::client::v0
