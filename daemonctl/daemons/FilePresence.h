#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Whether a file exists, as far as Windows tells.
enum class FilePresence {
    kThere,   ///< Windows shows the file
    kMissing, ///< there is no file or no folder of this name
    kUnknown  ///< Windows does not tell: the drive is not ready, or access is denied
};

/// Looks for a file, without opening it. @param path  UTF-8
[[nodiscard]] FilePresence PresenceOf(const std::string& path);

} // namespace vqrx::client::v0
