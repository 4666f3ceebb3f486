#include "system_library/SystemLibrary.h"

#include <array>
#include <cwchar>

namespace vqrx::cpp_utils::system_library::v1 {

// The full path keeps Windows from searching for the library itself. The flag lets it look for the
// library's own imports in the folder of the library first.
HMODULE LoadSystemLibrary(const wchar_t* fileName) noexcept
{
    std::array<wchar_t, MAX_PATH> path{};
    const UINT length = GetSystemDirectoryW(path.data(), MAX_PATH);
    const std::size_t nameLength = std::wcslen(fileName);
    if (length == 0 || length + 1 + nameLength >= path.size()) {
        return nullptr;
    }
    path[length] = L'\\';
    std::wmemcpy(&path[length + 1], fileName, nameLength + 1);
    return LoadLibraryExW(path.data(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

} // namespace vqrx::cpp_utils::system_library::v1
