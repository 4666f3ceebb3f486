#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// From this system's ANSI code page; on a system that has none, from Windows-1252.
std::string AnsiToUtf8(std::string_view text);

} // namespace vqrx::client::v0
