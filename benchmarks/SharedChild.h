#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::bench {

/// Objects that dm_bench shares with its children. A child is another process of dm_bench, started
/// directly or by the supervisor. It counts its start in a semaphore, writes its process id to
/// shared memory, and ends when an event is signalled.
class Children {
public:
    Children();
    ~Children() { EndAll(); }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    /// Waits until one more child has started.
    /// @return false if no child starts in this time
    [[nodiscard]] bool WaitForStart(DWORD milliseconds = 120000) const;
    /// Returns the process id of the newest child.
    [[nodiscard]] DWORD LastProcessId() const;
    /// Ends all running children.
    void EndAll() const;
    /// Starts a child directly and returns its process.
    /// @throws std::runtime_error  if the child cannot be started
    [[nodiscard]] static system::win32::v1::UniqueKernelHandle Start();

    /// Runs a child until its end. Returns its exit code.
    static int Run();

private:
    system::win32::v1::UniqueKernelHandle started_;
    system::win32::v1::UniqueKernelHandle end_;
    system::win32::v1::UniqueKernelHandle mapping_;
    volatile LONG* processId_;
};

/// Returns the path of this program.
[[nodiscard]] std::string OwnPath();

} // namespace vqrx::bench
