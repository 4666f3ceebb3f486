#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Reads a whole text file: UTF-8, or little-endian UTF-16 with a byte order mark, which Windows
/// PowerShell writes for redirected output.
/// @param path  UTF-8
/// @return the text in UTF-8; a UTF-8 byte order mark stays in it
/// @throws as ReadWholeFile (WholeFile.h)
[[nodiscard]] std::string ReadTextFile(const std::string& path);

} // namespace vqrx::client::v0
