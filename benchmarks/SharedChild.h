#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::bench {

/// What this program and the children it starts of itself, directly or through the supervisor,
/// share: children count their starts and leave their process ids, and all end at a signal.
class Children {
public:
    Children();
    ~Children() { EndAll(); }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    /// @return whether one more child has started within the time
    bool WaitForStart(DWORD milliseconds = 120000) const;
    /// The process id of the child that has started last.
    DWORD LastProcessId() const;
    /// Ends those that run now.
    void EndAll() const;
    /// Starts one directly. The caller owns the process.
    static HANDLE Start();

    /// The body of a child.
    static int Run();

private:
    system::win32::v1::UniqueKernelHandle started_;
    system::win32::v1::UniqueKernelHandle end_;
    system::win32::v1::UniqueKernelHandle mapping_;
    volatile LONG* processId_;
};

/// This program's own path.
std::string OwnPath();

} // namespace vqrx::bench
