#pragma once

#include <string>
#include <string_view>

namespace vqrx::system::file::v2 {

/// Returns the full path of the program that this process runs.
/// @throws std::bad_alloc
[[nodiscard]] std::wstring PathOfOwnProgram();

/// Returns the full path of a file in the folder of the program that this process runs. The file
/// need not exist.
/// @throws std::bad_alloc
[[nodiscard]] std::wstring PathBesideOwnProgram(std::wstring_view fileName);

} // namespace vqrx::system::file::v2
