#pragma once

#include "ProgramInJob.h"
#include "TempFolder.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// Owns a running program and keeps its output. The destructor ends the program and all processes
/// that it or its descendants started, and waits for the end of the program.
class CapturedProgram {
public:
    /// @param commandLine  UTF-8, the program's path first
    /// @throws std::runtime_error  if the program cannot be started
    explicit CapturedProgram(const std::string& commandLine);

    [[nodiscard]] DWORD Pid() const { return program_.Pid(); }
    /// @return false if the program still runs after this time
    bool Wait(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(program_.Process(), milliseconds) == WAIT_OBJECT_0;
    }
    [[nodiscard]] bool Running() const { return !Wait(0); }
    /// Ends the program with exit code 9 and does not wait.
    void Kill() const { TerminateProcess(program_.Process(), 9); }
    /// Waits for the end of the program, at most a minute.
    /// @return the exit code; STILL_ACTIVE (259) if the program still runs
    [[nodiscard]] DWORD ExitCode() const;

    /// Returns the standard output so far, with "\n" as line ends.
    [[nodiscard]] std::string Output() const;
    /// Returns the standard error so far, with "\n" as line ends.
    [[nodiscard]] std::string Error() const;

private:
    TempFolder files_;
    ProgramInJob program_;
};

} // namespace vqrx::test
