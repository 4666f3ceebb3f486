#include "LiveProcess.h"

#include "win32/UniqueHandle.h"

#include <winternl.h>

namespace vqrx::test {
namespace {

template <typename T>
[[nodiscard]] bool Read(HANDLE process, const void* from, T& to)
{
    return ReadProcessMemory(process, from, &to, sizeof to, nullptr) != FALSE;
}

// Reads the command line from the parameter block in the memory of the process. The block is where
// the loader wrote it.
std::wstring CommandLineOf(HANDLE process)
{
    PROCESS_BASIC_INFORMATION basic{};
    if (NtQueryInformationProcess(process, ProcessBasicInformation, &basic, sizeof basic, nullptr) <
        0) {
        return {};
    }
    PEB peb{};
    RTL_USER_PROCESS_PARAMETERS parameters{};
    if (!Read(process, basic.PebBaseAddress, peb) ||
        !Read(process, peb.ProcessParameters, parameters)) {
        return {};
    }
    std::wstring text(parameters.CommandLine.Length / sizeof(wchar_t), L'\0');
    if (ReadProcessMemory(process, parameters.CommandLine.Buffer, text.data(),
                          parameters.CommandLine.Length, nullptr) == FALSE) {
        return {};
    }
    return text;
}

} // namespace

std::optional<LiveProcess> ReadLiveProcess(DWORD processId)
{
    const system::win32::v1::UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE, FALSE, processId));
    if (!process || WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0) {
        return std::nullopt;
    }
    LiveProcess result;
    wchar_t path[1024] = {};
    DWORD size = 1024;
    if (QueryFullProcessImageNameW(process.Get(), 0, path, &size) != FALSE) {
        result.executablePath.assign(path, size);
    }
    result.commandLine = CommandLineOf(process.Get());
    return result;
}

} // namespace vqrx::test
