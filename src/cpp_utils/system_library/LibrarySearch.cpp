#include "system_library/LibrarySearch.h"

#include "system_library/SystemLibrary.h"

#include <windows.h>

namespace vqrx::cpp_utils::system_library::v1 {

void SearchLibrariesInSystemFolder() noexcept
{
    using SetDirectories = BOOL WINAPI(DWORD flags);
    constexpr DWORD kSystemFolder = 0x00000800; // LOAD_LIBRARY_SEARCH_SYSTEM32
    if (auto* const set = FindFunction<SetDirectories>(GetModuleHandleW(L"kernel32.dll"),
                                                       "SetDefaultDllDirectories")) {
        set(kSystemFolder);
    }
}

} // namespace vqrx::cpp_utils::system_library::v1
