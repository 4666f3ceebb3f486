#pragma once

#include <string>

namespace vqrx::client::v0 {

/// The last thing a program does with standard output: what was printed and did not arrive, on a
/// full disk say, is told on standard error.
/// @param program   what is asked, for the message: daemonctl or daemonctl-log
/// @param exitCode  what the program would end with
/// @return exitCode, or kRefused when something could not be written
int FinishOutput(const std::string& program, int exitCode);

} // namespace vqrx::client::v0
