#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Whether a file or a folder exists, as far as Windows tells.
enum class FilePresence {
    kThere,   ///< Windows shows it
    kMissing, ///< there is none of this name
    kUnknown  ///< Windows does not tell: the drive is not ready, or access is denied
};

/// Looks for a file or a folder, without opening it. @param path  UTF-8
[[nodiscard]] FilePresence PresenceOf(const std::string& path);

/// Returns whether a file or a folder exists, or Windows does not tell. So a file that is checked
/// before its use is checked then, too. @param path  UTF-8
[[nodiscard]] bool MayBeThere(const std::string& path);

/// Returns whether Windows shows a file at a path, not a folder. Does not open it.
/// @param path  UTF-8
[[nodiscard]] bool IsFile(const std::string& path);

} // namespace vqrx::client::v0
