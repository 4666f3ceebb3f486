#pragma once

namespace vqrx::cpp_utils::system_library::v1 {

/// Lets Windows look for libraries in the system folder only, for the rest of this process: not
/// beside the program, not in the working folder, not along PATH. Whoever may write to one of those
/// folders can then not plant a library. Libraries that are loaded by their full path still load.
/// Child processes do not inherit the setting.
/// Call it first in main. Libraries that the program imports are loaded before main: import only
/// libraries that Windows itself takes from the system folder (its "known DLLs").
/// Does nothing on a Windows 7 without the update KB2533623.
void SearchLibrariesInSystemFolder() noexcept;

} // namespace vqrx::cpp_utils::system_library::v1
