#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Replaces the content of a file in one step: a reader sees the old content or the new one, never
/// a part, also after a power failure. Writes a file beside it to the disk, with a random name that
/// ends with ".tmp", and renames it. A program that has the file open on Windows can prevent the
/// renaming; then the old file stays, and a later call may succeed.
/// @param path     UTF-8
/// @param content  any bytes
/// @return false if the file could not be written or replaced; then no temporary file is left
[[nodiscard]] bool ReplaceContent(const std::string& path, std::string_view content);

} // namespace vqrx::client::v0
