#pragma once

#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// A program whose output is kept. It ends with its owner, and so does every process that it or
/// its descendants have started.
class CapturedProgram {
public:
    /// @param commandLine  UTF-8, the program's path first
    /// @throws std::runtime_error when it cannot be started
    explicit CapturedProgram(const std::string& commandLine);
    CapturedProgram(const CapturedProgram&) = delete;
    CapturedProgram& operator=(const CapturedProgram&) = delete;
    ~CapturedProgram();

    DWORD Pid() const { return pid_; }
    /// @return whether it has ended within the time
    bool Wait(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    bool Running() const { return !Wait(0); }
    void Kill() const { TerminateProcess(process_.Get(), 9); }
    /// Waits for the end for at most a minute. @return 259 when it has not ended
    DWORD ExitCode() const;

    /// What it has written so far, line ends as "\n".
    std::string Output() const;
    std::string Error() const;

private:
    TempFolder files_;
    system::win32::v1::UniqueKernelHandle job_;
    system::win32::v1::UniqueKernelHandle process_;
    DWORD pid_ = 0;
};

/// A text file's content, line ends as "\n"; empty when it cannot be read.
std::string ReadText(const std::string& path);

} // namespace vqrx::test
