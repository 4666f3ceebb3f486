#pragma once

#include <filesystem>

namespace vqrx::kit {

/// Removes a folder with its content, also read-only files and paths of more than 260 characters. A
/// link is removed itself, not its target.
/// @param folder  full path
/// @return false if a part of it is left
bool RemoveTree(const std::filesystem::path& folder);

} // namespace vqrx::kit
