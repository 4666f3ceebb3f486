#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::kit {

/// Returns whether a text, such as a path or a command line, names a file below a folder. Letter
/// case does not count.
/// @param folder  full path without a backslash at the end, UTF-8
[[nodiscard]] bool NamesFileBelow(const std::string& text, const std::string& folder);

/// Returns the ids of the processes whose program is below a folder, without this process.
/// @param folder  as above
[[nodiscard]] std::vector<DWORD> ProcessesOfFolder(const std::string& folder);

/// Ends a process and waits for its end.
/// @return false if it still runs after 30 s
[[nodiscard]] bool EndProcessAndWait(DWORD processId);

} // namespace vqrx::kit
