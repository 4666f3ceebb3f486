#pragma once

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Whether this process has the full rights of an administrator.
[[nodiscard]] bool IsElevated() noexcept;

/// Returns why somebody else than administrators and the account of the running supervisor can
/// change a file that names processes: a listing, or the log. Windows only.
/// @param path  UTF-8
/// @return as WeaknessesOfPath()
[[nodiscard]] std::vector<std::string> WeaknessesOfSource(const std::string& path);

/// Returns whether a program lies below a folder. Letter case does not count. Pure.
/// @param program, folder  full paths, UTF-8
[[nodiscard]] bool IsBelow(const std::string& program, const std::string& folder);

} // namespace vqrx::client::v0
