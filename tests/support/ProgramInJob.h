#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <filesystem>
#include <string>

namespace vqrx::test {

/// How a program is started.
struct ProgramStart {
    std::string commandLine;      ///< UTF-8, the program's path first
    std::filesystem::path output; ///< new file for the standard output; empty: outputPipe
    std::filesystem::path error;  ///< new file for the standard error; empty: that of the output
    /// The current folder of the program, and its temporary folder; empty: those of this process.
    std::filesystem::path workFolder;
    DWORD creationFlags = 0;     ///< further flags for CreateProcess, such as CREATE_NO_WINDOW
    HANDLE outputPipe = nullptr; ///< inheritable, for the standard output; may be null
};

/// A program that runs without input, with all processes that it or its descendants start. The
/// destructor ends them all, and so does Windows if this process is killed.
class ProgramInJob {
public:
    /// @throws std::runtime_error  with the Windows error, if the program cannot be started
    explicit ProgramInJob(const ProgramStart& start);
    ProgramInJob(ProgramInJob&&) noexcept = default;
    ProgramInJob& operator=(ProgramInJob&&) noexcept = default;
    ProgramInJob(const ProgramInJob&) = delete;
    ProgramInJob& operator=(const ProgramInJob&) = delete;
    ~ProgramInJob();

    /// Returns the handle of the process, which is signalled when the program ends. Valid as long
    /// as this object.
    [[nodiscard]] HANDLE Process() const { return process_.Get(); }
    [[nodiscard]] DWORD Pid() const { return pid_; }
    /// Returns the exit code; STILL_ACTIVE (259) while the program runs.
    [[nodiscard]] DWORD ExitCode() const;
    /// Ends the program and all processes that it or its descendants started. Waits at most a
    /// minute for the end of the program, and then at most 10 s for the end of the others.
    void EndTree();

private:
    system::win32::v1::UniqueKernelHandle job_;
    system::win32::v1::UniqueKernelHandle process_;
    DWORD pid_ = 0;
};

} // namespace vqrx::test
