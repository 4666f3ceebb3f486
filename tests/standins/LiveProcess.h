#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace vqrx::test {

/// Path and command line of a running process.
struct LiveProcess {
    std::wstring executablePath;
    std::wstring commandLine;
};
/// @return empty if the process does not exist, has ended or cannot be opened
[[nodiscard]] std::optional<LiveProcess> ReadLiveProcess(DWORD processId);

} // namespace vqrx::test
