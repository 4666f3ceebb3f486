#pragma once

#include <filesystem>
#include <string>

namespace vqrx::client::v0 {

/// Reads a whole file, byte for byte.
/// @param path  any path that the system takes
/// @throws std::runtime_error "PATH cannot be read", with the path in UTF-8, if the file cannot be
///         opened, or not be read to its end
/// @throws std::bad_alloc
[[nodiscard]] std::string ReadWholeFile(const std::filesystem::path& path);

} // namespace vqrx::client::v0
