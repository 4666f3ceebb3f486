#include "ProcessList.h"

#include "ProcessFacts.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <tlhelp32.h>

#include <cstddef>
#include <functional>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;

void ForEachProcess(const std::function<void(const PROCESSENTRY32W& entry)>& visit)
{
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = snapshot ? Process32FirstW(snapshot.Get(), &entry) : FALSE; more != FALSE;
         more = Process32NextW(snapshot.Get(), &entry)) {
        visit(entry);
    }
}

} // namespace

std::string VersionOfImage(const std::wstring& path)
{
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    std::vector<std::byte> block(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (size == 0 || GetFileVersionInfoW(path.c_str(), 0, size, block.data()) == FALSE ||
        VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &length) == FALSE ||
        length < sizeof *info) {
        return {};
    }
    return std::to_string(HIWORD(info->dwProductVersionMS)) + "." +
           std::to_string(LOWORD(info->dwProductVersionMS)) + "." +
           std::to_string(HIWORD(info->dwProductVersionLS));
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

} // namespace vqrx::client::v0
