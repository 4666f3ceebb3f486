#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace vqrx::test {

/// What the system itself knows of a running process.
struct LiveProcess {
    std::wstring executablePath;
    std::wstring commandLine;
};
std::optional<LiveProcess> ReadLiveProcess(DWORD processId);

} // namespace vqrx::test
