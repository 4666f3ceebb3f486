#include "ProcessFacts.h"

#include "HeldProcess.h"
#include "Utf8.h"
#include "win32/FileTime.h"
#include "win32/LocalMemory.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <psapi.h>
#include <shellapi.h>
#include <winternl.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {
namespace {

namespace win32 = system::win32::v1;

using win32::UniqueKernelHandle;
using win32::UniqueServiceHandle;

std::wstring ImageOf(HANDLE process)
{
    std::wstring path(32768, L'\0');
    auto size = static_cast<DWORD>(path.size());
    if (QueryFullProcessImageNameW(process, 0, path.data(), &size) == FALSE) {
        return {};
    }
    path.resize(size);
    return path;
}

template <typename T>
bool ReadFrom(HANDLE process, const void* address, T& value)
{
    return ReadProcessMemory(process, address, &value, sizeof value, nullptr) != FALSE;
}

// From the process's own parameters, where the loader put it; the documented way, WMI, is a service
// that may be down.
std::wstring CommandLineOf(HANDLE process)
{
    PROCESS_BASIC_INFORMATION basic{};
    PEB environment{};
    RTL_USER_PROCESS_PARAMETERS parameters{};
    if (NtQueryInformationProcess(process, ProcessBasicInformation, &basic, sizeof basic, nullptr) <
            0 ||
        !ReadFrom(process, basic.PebBaseAddress, environment) ||
        !ReadFrom(process, environment.ProcessParameters, parameters)) {
        return {};
    }
    const UNICODE_STRING& text = parameters.CommandLine;
    std::wstring commandLine(text.Length / sizeof(wchar_t), L'\0');
    return ReadProcessMemory(process, text.Buffer, commandLine.data(),
                             commandLine.size() * sizeof(wchar_t), nullptr) != FALSE
               ? commandLine
               : std::wstring();
}

struct FileIdentity {
    DWORD volume = 0;
    std::uint64_t index = 0;
    bool operator==(const FileIdentity&) const = default;
};

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    const UniqueKernelHandle file(
        CreateFileW(Wide(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file || GetFileInformationByHandle(file.Get(), &information) == FALSE) {
        return std::nullopt;
    }
    return FileIdentity{information.dwVolumeSerialNumber,
                        (static_cast<std::uint64_t>(information.nFileIndexHigh) << 32U) |
                            information.nFileIndexLow};
}

} // namespace

HeldProcess::HeldProcess(std::uint32_t processId)
    : processId_(processId)
    , process_(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, processId))
{
    if (!process_) {
        const DWORD error = GetLastError();
        hidden_ = error == ERROR_ACCESS_DENIED;
    }
}

ProcessFacts HeldProcess::Facts() const
{
    ProcessFacts facts;
    facts.processId = processId_;
    if (!process_) {
        facts.state = hidden_ ? ProcessFacts::State::hidden : ProcessFacts::State::gone;
        return facts;
    }
    if (WaitForSingleObject(process_.Get(), 0) == WAIT_OBJECT_0) {
        return facts;
    }
    facts.state = ProcessFacts::State::running;
    facts.image = Utf8(ImageOf(process_.Get()));
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(process_.Get(), &created, &ended, &kernel, &user) != FALSE) {
        facts.createdMs = win32::UnixMilliseconds(created);
        facts.cpuMs = static_cast<std::int64_t>(win32::Ticks(kernel) + win32::Ticks(user)) /
                      win32::kTicksPerMillisecond;
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(process_.Get(), &memory, sizeof memory) != FALSE) {
        facts.memoryBytes = memory.WorkingSetSize;
    }
    return facts;
}

ProcessFacts ReadProcessFacts(std::uint32_t processId)
{
    return HeldProcess(processId).Facts();
}

std::vector<std::string> ArgumentsOfProcess(std::uint32_t processId)
{
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
    const std::wstring commandLine = process ? CommandLineOf(process.Get()) : std::wstring();
    std::vector<std::string> arguments;
    if (commandLine.empty()) { // it would split into this process's own name
        return arguments;
    }
    int count = 0;
    const win32::UniqueLocalMemory<wchar_t*> split(CommandLineToArgvW(commandLine.c_str(), &count));
    for (int index = 1; split && index < count; ++index) {
        arguments.push_back(Utf8(split.get()[index]));
    }
    return arguments;
}

bool IsSameFile(const std::string& left, const std::string& right)
{
    const std::optional<FileIdentity> identity = IdentityOf(left);
    return identity && identity == IdentityOf(right);
}

std::string CommandOfService(const std::string& name)
{
    constexpr DWORD bufferSize = 8192; // the most that the call ever needs, says its reference
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        manager ? OpenServiceW(manager.Get(), Wide(name).c_str(), SERVICE_QUERY_CONFIG) : nullptr);
    std::vector<std::byte> buffer(bufferSize);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    DWORD needed = 0;
    if (!service || QueryServiceConfigW(service.Get(), config, bufferSize, &needed) == FALSE) {
        return {};
    }
    return Utf8(config->lpBinaryPathName);
}

} // namespace vqrx::client::v0
