#include "ProcessFacts.h"

#include "HeldProcess.h"
#include "Utf8.h"
#include "win32/LocalMemory.h"
#include "win32/ServiceConfig.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

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

template <typename T>
bool ReadFrom(HANDLE process, const void* address, T& value)
{
    return ReadProcessMemory(process, address, &value, sizeof value, nullptr) != FALSE;
}

// Reads the command line from the memory of the process, where the loader stored it. The documented
// way leads through the WMI service, which may be down.
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

ProcessFacts ReadProcessFacts(std::uint32_t processId)
{
    return HeldProcess(processId).Facts();
}

std::vector<std::string> ArgumentsOfProcess(std::uint32_t processId)
{
    return ReadArguments(processId).value_or(std::vector<std::string>());
}

std::optional<std::vector<std::string>> ReadArguments(std::uint32_t processId)
{
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
    const std::wstring commandLine = process ? CommandLineOf(process.Get()) : std::wstring();
    if (commandLine.empty()) { // CommandLineToArgvW would return the name of this program
        return std::nullopt;
    }
    std::vector<std::string> arguments;
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
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        manager ? OpenServiceW(manager.Get(), Wide(name).c_str(), SERVICE_QUERY_CONFIG) : nullptr);
    std::vector<std::byte> buffer(win32::kServiceConfigBytes);
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    DWORD needed = 0;
    if (!service ||
        QueryServiceConfigW(service.Get(), config, win32::kServiceConfigBytes, &needed) == FALSE) {
        return {};
    }
    return Utf8(config->lpBinaryPathName);
}

} // namespace vqrx::client::v0
