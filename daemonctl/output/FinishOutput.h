#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Flushes standard output at the end of a program. If some of the output was lost, for example on
/// a full disk, prints an error on standard error. Output that its reader did not want, as in
/// "daemonctl log | head", is not lost.
/// @param program   name for the error message: daemonctl or daemonctl-log
/// @param exitCode  exit code of the work that is done
/// @return exitCode, or kRefused if output was lost
[[nodiscard]] int FinishOutput(const std::string& program, int exitCode);

} // namespace vqrx::client::v0
