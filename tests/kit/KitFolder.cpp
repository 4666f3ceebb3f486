#include "KitFolder.h"

#include "AtomicFile.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vqrx::kit {

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
                                 " is missing: unpack the whole ZIP and start run-tests.exe there");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

bool ReplaceContentOnDisk(const std::filesystem::path& path, const std::string& content)
{
    if (!client::v0::ReplaceContent(client::v0::Utf8(path.wstring()), content)) {
        return false;
    }
    const system::win32::v1::UniqueKernelHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr));
    FlushFileBuffers(file.Get());
    return true;
}

} // namespace vqrx::kit
