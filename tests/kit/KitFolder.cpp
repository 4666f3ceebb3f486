#include "KitFolder.h"

#include "AtomicFile.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vqrx::kit {
namespace {

constexpr unsigned kReplaceMs = 10000;
constexpr DWORD kReplacePauseMs = 50; // Windows has no event for a file that is closed

} // namespace

std::filesystem::path OwnFolder()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    std::wstring longPath(32768, L'\0');
    longPath.resize(
        GetLongPathNameW(path.c_str(), longPath.data(), static_cast<DWORD>(longPath.size())));
    return std::filesystem::path(longPath.empty() ? path : longPath).parent_path();
}

std::string ContentOfFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(client::v0::Utf8(path.wstring()) +
                                 " is missing. This program was started inside the ZIP, or without "
                                 "the other files: unpack the whole ZIP to C:\\kit (right-click "
                                 "it, Extract All), and start run-tests.exe there");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

bool ReplaceContentWithin(const std::filesystem::path& path, const std::string& content,
                          unsigned limitMs, const std::function<void()>& pause)
{
    const std::string name = client::v0::Utf8(path.wstring());
    const ULONGLONG begin = GetTickCount64();
    while (!client::v0::ReplaceContent(name, content)) {
        if (GetTickCount64() - begin >= limitMs) {
            return false;
        }
        if (pause) {
            pause();
        } else {
            Sleep(kReplacePauseMs);
        }
    }
    return true;
}

bool ReplaceContentOnDisk(const std::filesystem::path& path, const std::string& content)
{
    if (!ReplaceContentWithin(path, content, kReplaceMs)) {
        return false;
    }
    const system::win32::v1::UniqueKernelHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr));
    FlushFileBuffers(file.Get());
    return true;
}

} // namespace vqrx::kit
