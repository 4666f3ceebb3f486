#include "KitProcesses.h"

#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <tlhelp32.h>

namespace vqrx::kit {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kProcessEndMs = 30000;

std::wstring Lower(const std::string& text)
{
    std::wstring wide = Wide(text);
    CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return wide;
}

std::string ProgramOf(DWORD processId)
{
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    std::wstring path(32768, L'\0');
    auto size = static_cast<DWORD>(path.size());
    return process && QueryFullProcessImageNameW(process.Get(), 0, path.data(), &size) != FALSE
               ? Utf8(std::wstring_view(path).substr(0, size))
               : std::string();
}

} // namespace

bool NamesFileBelow(const std::string& text, const std::string& folder)
{
    return Lower(text).find(Lower(folder + "\\")) != std::wstring::npos;
}

std::vector<DWORD> ProcessesOfFolder(const std::string& folder)
{
    std::vector<DWORD> found;
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more != FALSE;
         more = Process32NextW(snapshot.Get(), &entry)) {
        const DWORD processId = entry.th32ProcessID;
        if (processId != GetCurrentProcessId() && NamesFileBelow(ProgramOf(processId), folder)) {
            found.push_back(processId);
        }
    }
    return found;
}

bool EndProcessAndWait(DWORD processId)
{
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, processId));
    if (!process) {
        return GetLastError() == ERROR_INVALID_PARAMETER; // no process has this id any more
    }
    TerminateProcess(process.Get(), 9);
    return WaitForSingleObject(process.Get(), kProcessEndMs) == WAIT_OBJECT_0;
}

} // namespace vqrx::kit
