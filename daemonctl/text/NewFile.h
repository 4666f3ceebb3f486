#pragma once

#include <filesystem>
#include <string_view>

namespace vqrx::client::v0 {

/// Makes a file that does not exist yet, writes its whole content, and waits until it is on the
/// disk. Anything that has the name already, also a link that leads nowhere, is left as it is.
/// @param path     any path that the system takes
/// @param content  any bytes
/// @return false if the name was taken or the file could not be written; then no part of it is left
[[nodiscard]] bool WriteNewFile(const std::filesystem::path& path, std::string_view content);

} // namespace vqrx::client::v0
