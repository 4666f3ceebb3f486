#pragma once

#include <windows.h>

namespace vqrx::cpp_utils::system_library::v1 {

/// Loads a library of Windows from the system folder. A library of this name in any other folder,
/// for example beside the program, is not looked for. Use it for a library that not every Windows
/// has, or that Windows would look for beside the program first. The library stays loaded until the
/// process ends.
/// @param fileName  file name of the library without a folder
/// @return null if the system folder has no such library, or if it cannot be loaded
[[nodiscard]] HMODULE LoadSystemLibrary(const wchar_t* fileName) noexcept;

/// Returns a function of a library that LoadSystemLibrary loaded.
/// @tparam Function  the type of the function
/// @return null if library is null or has no such function
template <typename Function>
[[nodiscard]] Function* FindFunction(HMODULE library, const char* name) noexcept
{
    // The cast through void* avoids a warning: the two function types are not related.
    return library == nullptr ? nullptr
                              : reinterpret_cast<Function*>(
                                    reinterpret_cast<void*>(GetProcAddress(library, name)));
}

} // namespace vqrx::cpp_utils::system_library::v1
