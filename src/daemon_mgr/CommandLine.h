#pragma once

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Builds the command line of a launch: the path, then each argument, each followed by one space.
/// A part that contains a space is put between double quotes. A part without a space never gets
/// quotes, not even a part with a tab or an empty part. Quotes inside a part are not escaped.
/// Example: path "C:\My Apps\a.exe" with the arguments "-x" and "two words" gives
/// `"C:\My Apps\a.exe" -x "two words" `, with the space at the end.
/// @throws std::bad_alloc
[[nodiscard]] std::string BuildCommandLine(const std::string& executablePath,
                                           const std::vector<std::string>& arguments);

} // namespace vqrx::system::daemon::daemon_mgr::v0
