#pragma once

#include <string>

namespace vqrx::log::log_perf::v2 {

/// Moves a damaged log file out of the way: a new file can then be begun under its name. A file
/// that was set aside before is replaced. If another program keeps the file from being renamed, its
/// content is copied, and the file is emptied. A read-only attribute of the two files is cleared.
/// @param path     of the damaged file, in the ANSI code page; no stream of the caller has it open
/// @param newPath  where its content is kept
/// @return false if neither works: then the content of both files is unchanged
[[nodiscard]] bool SetAside(const std::string& path, const std::string& newPath);

} // namespace vqrx::log::log_perf::v2
