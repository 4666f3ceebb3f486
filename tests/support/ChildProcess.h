#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::test {

/// Returns the folder of this test program, without a trailing separator.
[[nodiscard]] std::string OwnFolder();

/// Returns the full path of a program from tests/programs.
/// @param name  file name without ".exe"
[[nodiscard]] std::string TestProgram(const std::string& name);

/// Returns the full path of a program of the product.
/// @param name  file name with ".exe"
[[nodiscard]] std::string ProductProgram(const std::string& name);

/// Named event, at first not signalled. A child program signals it when it is ready, or waits for
/// it.
class ReadyEvent {
public:
    ReadyEvent();
    [[nodiscard]] const std::string& Name() const { return name_; }
    /// @return false if nobody signals the event within a minute
    [[nodiscard]] bool Wait() const
    {
        return WaitForSingleObject(event_.Get(), 60000) == WAIT_OBJECT_0;
    }
    /// Signals the event, for a child that waits for it.
    void Signal() const { SetEvent(event_.Get()); }

private:
    std::string name_;
    system::win32::v1::UniqueKernelHandle event_;
};

/// Owns a child process. The destructor ends the process and waits for its end.
class ChildProcess {
public:
    /// @param commandLine  as CreateProcess takes it, the program's path first
    /// @param output       handle for the child's output and errors, which the child inherits; null
    ///                     for those of this program
    /// @throws std::runtime_error if the process cannot be started
    explicit ChildProcess(std::string commandLine, HANDLE output = nullptr);
    ChildProcess(ChildProcess&&) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    [[nodiscard]] DWORD Pid() const { return pid_; }
    [[nodiscard]] HANDLE Handle() const { return process_.Get(); }
    /// @return false if the process still runs after this time
    bool Wait(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    [[nodiscard]] bool Running() const { return !Wait(0); }
    /// Returns the exit code; STILL_ACTIVE while the process runs.
    [[nodiscard]] DWORD ExitCode() const;
    /// Ends the process with exit code 9 and does not wait.
    void Kill() const { TerminateProcess(process_.Get(), 9); }

private:
    system::win32::v1::UniqueKernelHandle process_;
    DWORD pid_ = 0;
};

/// Reports whether a process with this id runs.
[[nodiscard]] bool IsRunning(DWORD processId);

/// Ends a process by its id and waits for its end, at most a minute. Does nothing if there is none.
void KillProcess(DWORD processId);

/// Suspends a process, with the threads that its threads are about to make. SuspendThread for each
/// thread would miss those, and a single thread that runs on can answer for COM.
/// @return whether the process is suspended
[[nodiscard]] bool SuspendProcess(DWORD processId);

/// Lets a suspended process go on. @return whether it goes on
[[nodiscard]] bool ResumeProcess(DWORD processId);

/// Returns how many threads a process has; 0 if there is no such process.
[[nodiscard]] std::size_t CountOfThreads(DWORD processId);

/// Ends processes that the test did not start itself, for example daemons of a supervisor. The
/// destructor ends every noted process.
class ProcessReaper {
public:
    void Note(DWORD processId) { processIds_.push_back(processId); }
    ~ProcessReaper();

private:
    std::vector<DWORD> processIds_;
};

} // namespace vqrx::test
