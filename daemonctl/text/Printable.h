#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Makes a text harmless for a terminal: writes each control character except the tab as its code,
/// for example "\x07" for the bell.
/// @param utf8  valid UTF-8
[[nodiscard]] std::string Printable(std::string_view utf8);

} // namespace vqrx::client::v0
