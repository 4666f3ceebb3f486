#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

// The texts of this program are UTF-8, the texts of Windows are UTF-16. A conversion throws
// std::bad_alloc, and CodePageError (a std::runtime_error) for a text of 2^29 characters or more.
// Invalid parts are replaced, not refused.

/// Converts a text to UTF-16.
[[nodiscard]] std::wstring Wide(std::string_view utf8);

/// Converts each text to UTF-16.
[[nodiscard]] std::vector<std::wstring> Wide(const std::vector<std::string>& utf8);

/// Converts a text to UTF-8.
[[nodiscard]] std::string Utf8(std::wstring_view wide);

/// Returns the arguments of this process in UTF-8, the program name first.
[[nodiscard]] std::vector<std::string> Utf8Arguments();

} // namespace vqrx::client::v0
