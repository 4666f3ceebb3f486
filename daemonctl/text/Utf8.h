#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// The program's own texts are UTF-8; Windows' are UTF-16.
std::wstring Wide(std::string_view utf8);
std::vector<std::wstring> Wide(const std::vector<std::string>& utf8);
std::string Utf8(std::wstring_view wide);

/// This process's arguments, the program name first, in UTF-8.
std::vector<std::string> Utf8Arguments();

} // namespace vqrx::client::v0
