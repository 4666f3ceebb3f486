#pragma once

#include <string>

namespace vqrx::setup::v0 {

// Places of this machine. UTF-8, without a separator at the end.

/// Returns the folder of installed programs, usually "C:\Program Files".
/// @throws SetupError if Windows does not name it
[[nodiscard]] std::string ProgramFilesFolder();

/// Returns Windows' system folder.
[[nodiscard]] std::string SystemFolder();

/// Returns where the firmware is put if nothing names its root: D:\FIRMWARE, or FIRMWARE on the
/// drive of Windows if D: is no fixed disk.
[[nodiscard]] std::string DefaultFirmwareRoot();

/// Returns the full path of the program that this process runs.
[[nodiscard]] std::string OwnProgram();

/// Returns a path as Windows completes it: from the root of its drive on, with backslashes, without
/// "." and "..". Changes neither letter case nor short names.
/// @throws SetupError if Windows refuses the text
[[nodiscard]] std::string FullPath(const std::string& path);

/// Returns whether a file or a folder may be at a path. False only if Windows says that there is
/// none: a file that Windows does not show to this process counts as there.
[[nodiscard]] bool IsOnDisk(const std::string& path);

/// Returns the folder part of a full path; "C:\" for a file in the root of a drive.
[[nodiscard]] std::string FolderOf(const std::string& path);

} // namespace vqrx::setup::v0
