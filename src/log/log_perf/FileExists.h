#pragma once

#include <string>

namespace vqrx::log::log_perf::v2 {

/// Whether something (a file or a folder) stands at the path, given in the ANSI code page.
bool FileExists(const std::string& path) noexcept;

} // namespace vqrx::log::log_perf::v2
