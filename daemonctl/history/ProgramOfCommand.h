#pragma once

#include <string>

namespace vqrx::client::v0 {

// A command of the log is the path of a program and its arguments. Paths may hold blanks, and the
// log does not quote them. So the path ends with the first ".exe" before a blank, else at the first
// blank.

/// Returns a command without the folder of its program: "a.exe -x" for "C:\My App\a.exe -x". Pure.
[[nodiscard]] std::string WithoutFolder(const std::string& command);

/// Returns the file name of the program: "a.exe" for "C:\My App\a.exe -x". Pure.
[[nodiscard]] std::string ProgramNameOf(const std::string& command);

/// Returns the path of the program: "C:\My App\a.exe" for "C:\My App\a.exe -x". Pure.
[[nodiscard]] std::string ProgramPathOf(const std::string& command);

} // namespace vqrx::client::v0
