#include "file/OwnProgram.h"

#include <windows.h>

#include <cstddef>

namespace vqrx::system::file::v2 {

std::wstring PathOfOwnProgram()
{
    constexpr std::size_t kLongest = 32768; // characters, of any path
    std::wstring path(kLongest, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::wstring PathBesideOwnProgram(std::wstring_view fileName)
{
    const std::wstring program = PathOfOwnProgram();
    return program.substr(0, program.find_last_of(L"\\/") + 1).append(fileName);
}

} // namespace vqrx::system::file::v2
