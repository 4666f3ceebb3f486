#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <filesystem>
#include <string>

namespace vqrx::kit {

/// A test program that runs, with all processes that it starts. The destructor ends them all, and
/// so does Windows if this process is killed.
class ProgramRun {
public:
    /// Starts a program without a window. It has no input, and its temporary folder is the work
    /// folder.
    /// @param commandLine  UTF-8, the program's path first
    /// @param workFolder   exists; also the current folder of the program
    /// @param output       file for everything that the program prints
    /// @throws std::runtime_error  with the Windows error, if the program cannot be started
    ProgramRun(const std::string& commandLine, const std::filesystem::path& workFolder,
               const std::filesystem::path& output);
    ProgramRun(ProgramRun&&) noexcept = default;
    ProgramRun& operator=(ProgramRun&&) noexcept = default;
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    ~ProgramRun();

    /// Returns the handle of the process, which is signalled when the program ends. Valid as long
    /// as this object.
    [[nodiscard]] HANDLE Process() const { return process_.Get(); }
    /// Returns the exit code; STILL_ACTIVE (259) while the program runs.
    [[nodiscard]] unsigned ExitCode() const;
    /// Ends the program and all processes that it or its descendants started, and waits for the end
    /// of the program.
    void EndTree();

private:
    system::win32::v1::UniqueKernelHandle job_;
    system::win32::v1::UniqueKernelHandle process_;
};

} // namespace vqrx::kit
