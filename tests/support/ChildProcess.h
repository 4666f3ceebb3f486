#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::test {

/// The folder of this test program, without a trailing separator.
std::string OwnFolder();

/// The full path of a program from tests/programs.
std::string TestProgram(const std::string& name);

/// The full path of one of the product's programs.
std::string ProductProgram(const std::string& name);

/// A named event, not signalled, that child programs signal when they are ready, or wait for.
class ReadyEvent {
public:
    ReadyEvent();
    const std::string& Name() const { return name_; }
    /// @return false when it is not signalled within a minute
    bool Wait() const { return WaitForSingleObject(event_.Get(), 60000) == WAIT_OBJECT_0; }
    /// For an event that a child waits for.
    void Signal() const { SetEvent(event_.Get()); }

private:
    std::string name_;
    system::win32::v1::UniqueKernelHandle event_;
};

/// A child that is ended with its owner.
class ChildProcess {
public:
    /// @param commandLine  as CreateProcess takes it, the program's path first
    /// @throws std::runtime_error when it cannot be started
    explicit ChildProcess(std::string commandLine, HANDLE output = nullptr);
    ChildProcess(ChildProcess&&) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    DWORD Pid() const { return pid_; }
    HANDLE Handle() const { return process_.Get(); }
    /// @return whether it has ended within the time
    bool Wait(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    bool Running() const { return !Wait(0); }
    DWORD ExitCode() const;
    void Kill() const { TerminateProcess(process_.Get(), 9); }

private:
    system::win32::v1::UniqueKernelHandle process_;
    DWORD pid_ = 0;
};

/// Whether a process with this id lives.
bool IsRunning(DWORD processId);

/// Ends a process that this test program has no handle of; waits until it is gone.
void KillProcess(DWORD processId);

/// Ends, when destroyed, the processes of this process's descendants that were noted.
class ProcessReaper {
public:
    void Note(DWORD processId) { processIds_.push_back(processId); }
    ~ProcessReaper();

private:
    std::vector<DWORD> processIds_;
};

} // namespace vqrx::test
