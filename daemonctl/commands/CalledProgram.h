#pragma once

#include "win32/UniqueHandle.h"

#include <cstdint>
#include <map>
#include <string>

namespace vqrx::client::v0 {

/// A program that was called with a text on its standard input. The destructor ends it, and with it
/// all programs that it has started. It waits until they have ended, at most ten seconds, so that
/// two calls do not overlap. If Windows refuses to put it into a job, the programs that it
/// started run on: before Windows 8 that happens if this process is in a job itself.
class CalledProgram {
public:
    /// Starts the program without a window.
    /// @param program      full path, UTF-8; without arguments
    /// @param environment  variables in addition to those of this process, UTF-8
    /// @param input        the standard input
    /// @throws std::runtime_error if Windows does not start it
    CalledProgram(const std::string& program, const std::map<std::string, std::string>& environment,
                  const std::string& input);

    CalledProgram(const CalledProgram&) = delete;
    CalledProgram& operator=(const CalledProgram&) = delete;
    ~CalledProgram();

    /// Returns whether the program still runs.
    [[nodiscard]] bool Runs() const;

    /// Returns the exit code of the program, which has ended.
    [[nodiscard]] std::uint32_t ExitCode() const;

private:
    system::win32::v1::UniqueKernelHandle job_;
    system::win32::v1::UniqueKernelHandle process_;
};

} // namespace vqrx::client::v0
