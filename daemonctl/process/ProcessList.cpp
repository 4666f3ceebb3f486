#include "ProcessList.h"

#include "ProcessFacts.h"
#include "Utf8.h"
#include "system_library/SystemLibrary.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <tlhelp32.h>

#include <cstddef>
#include <functional>
#include <set>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using cpp_utils::system_library::v1::FindFunction;
using cpp_utils::system_library::v1::LoadSystemLibrary;
using system::win32::v1::UniqueKernelHandle;

bool IsConsoleHost(const std::string& image)
{
    return image.ends_with("\\conhost.exe");
}

void ForEachProcess(const std::function<void(const PROCESSENTRY32W& entry)>& visit)
{
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        throw ProcessListUnreadable(GetLastError());
    }
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    BOOL more = Process32FirstW(snapshot.Get(), &entry);
    while (more != FALSE) {
        visit(entry);
        more = Process32NextW(snapshot.Get(), &entry);
    }
    const DWORD error = GetLastError();
    if (error != ERROR_NO_MORE_FILES) {
        throw ProcessListUnreadable(error);
    }
}

} // namespace

ProcessListUnreadable::ProcessListUnreadable(std::uint32_t error)
    : std::runtime_error("the list of processes cannot be read: Windows error " +
                         std::to_string(error))
{
}

// version.dll is loaded from the system folder and not imported, because Windows would take a file
// of this name beside the program.
std::string VersionOfImage(const std::wstring& path)
{
    using GetSize = DWORD WINAPI(LPCWSTR path, LPDWORD ignored);
    using GetInfo = BOOL WINAPI(LPCWSTR path, DWORD ignored, DWORD size, LPVOID block);
    using QueryValue = BOOL WINAPI(LPCVOID block, LPCWSTR name, LPVOID * value, PUINT length);
    const HMODULE library = LoadSystemLibrary(L"version.dll");
    auto* const getSize = FindFunction<GetSize>(library, "GetFileVersionInfoSizeW");
    auto* const getInfo = FindFunction<GetInfo>(library, "GetFileVersionInfoW");
    auto* const queryValue = FindFunction<QueryValue>(library, "VerQueryValueW");
    if (getSize == nullptr || getInfo == nullptr || queryValue == nullptr) {
        return {};
    }
    DWORD ignored = 0;
    const DWORD size = getSize(path.c_str(), &ignored);
    std::vector<std::byte> block(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (size == 0 || getInfo(path.c_str(), 0, size, block.data()) == FALSE ||
        queryValue(block.data(), L"\\", reinterpret_cast<void**>(&info), &length) == FALSE ||
        length < sizeof *info) {
        return {};
    }
    return std::to_string(HIWORD(info->dwProductVersionMS)) + "." +
           std::to_string(LOWORD(info->dwProductVersionMS)) + "." +
           std::to_string(HIWORD(info->dwProductVersionLS));
}

bool IsImageRunning(const std::wstring& fileName)
{
    bool found = false;
    ForEachProcess([&](const PROCESSENTRY32W& entry) {
        found = found || lstrcmpiW(entry.szExeFile, fileName.c_str()) == 0;
    });
    return found;
}

std::vector<ImageFacts> ProcessesOfImage(const std::wstring& fileName)
{
    std::vector<ImageFacts> found;
    ForEachProcess([&](const PROCESSENTRY32W& entry) {
        if (lstrcmpiW(entry.szExeFile, fileName.c_str()) == 0) {
            const ProcessFacts process = ReadProcessFacts(entry.th32ProcessID);
            found.push_back(
                {entry.th32ProcessID, process.image, VersionOfImage(Wide(process.image))});
        }
    });
    return found;
}

std::vector<std::uint32_t> ChildrenOfProcess(std::uint32_t processId)
{
    std::vector<std::uint32_t> children;
    ForEachProcess([&](const PROCESSENTRY32W& entry) {
        if (entry.th32ParentProcessID == processId) {
            children.push_back(entry.th32ProcessID);
        }
    });
    return children;
}

std::optional<std::uint32_t> ParentOfProcess(std::uint32_t processId)
{
    std::optional<std::uint32_t> parent;
    ForEachProcess([&](const PROCESSENTRY32W& entry) {
        if (entry.th32ProcessID == processId) {
            parent = entry.th32ParentProcessID;
        }
    });
    return parent;
}

std::vector<ProcessFacts> RunningChildren(std::uint32_t parentId)
{
    std::vector<ProcessFacts> children;
    for (const std::uint32_t processId : ChildrenOfProcess(parentId)) {
        ProcessFacts facts = ReadProcessFacts(processId);
        if (facts.state == ProcessFacts::State::kRunning && !IsConsoleHost(facts.image)) {
            children.push_back(std::move(facts));
        }
    }
    return children;
}

std::vector<std::uint32_t> OrphansOfImage(const std::wstring& fileName)
{
    std::vector<PROCESSENTRY32W> found;
    std::set<DWORD> running;
    ForEachProcess([&](const PROCESSENTRY32W& entry) {
        running.insert(entry.th32ProcessID);
        if (lstrcmpiW(entry.szExeFile, fileName.c_str()) == 0) {
            found.push_back(entry);
        }
    });
    std::vector<std::uint32_t> orphans;
    for (const PROCESSENTRY32W& entry : found) {
        // Windows gives ids again. If the parent is younger than the process, it is another
        // process.
        const DWORD parent = entry.th32ParentProcessID;
        const ProcessFacts facts = ReadProcessFacts(parent);
        const bool isYounger = facts.state == ProcessFacts::State::kRunning &&
                               facts.createdMs > ReadProcessFacts(entry.th32ProcessID).createdMs;
        if (running.count(parent) == 0 || isYounger) {
            orphans.push_back(entry.th32ProcessID);
        }
    }
    return orphans;
}

} // namespace vqrx::client::v0
