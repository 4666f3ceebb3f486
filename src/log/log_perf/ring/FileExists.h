#pragma once

#include <string>

namespace vqrx::log::log_perf::v2 {

/// Whether a file or a folder exists at the path. If access to it is refused, the result is false.
/// @param path  in the ANSI code page
[[nodiscard]] bool FileExists(const std::string& path) noexcept;

} // namespace vqrx::log::log_perf::v2
