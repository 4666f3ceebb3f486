#pragma once

#include <filesystem>

namespace vqrx::kit {

/// Removes a folder with its content, also read-only files and paths of more than 260 characters. A
/// link is removed itself, not its target.
/// @param folder  full path
/// @return false if a part of it is left
bool RemoveTree(const std::filesystem::path& folder);

/// As RemoveTree, but tries again for a while if a part of the folder is left: another program,
/// such as a virus scanner, may have a file open.
/// @param limitMs  milliseconds; 0: one attempt
/// @return false if a part of the folder is left after this time
[[nodiscard]] bool RemoveTreeWithin(const std::filesystem::path& folder, unsigned limitMs);

} // namespace vqrx::kit
