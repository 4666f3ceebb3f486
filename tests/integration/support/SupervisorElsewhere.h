#pragma once

#include "ChildProcess.h"
#include "TempFolder.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// A process that looks like a supervisor of another folder: a copy of a child program, which has
/// the name of the supervisor's program, and has started another process. Needs the test program
/// forwards. The destructor ends both processes.
class SupervisorElsewhere {
public:
    /// Starts both. Waits until the child runs; a failure is reported to the test.
    SupervisorElsewhere();
    ~SupervisorElsewhere();
    SupervisorElsewhere(const SupervisorElsewhere&) = delete;
    SupervisorElsewhere& operator=(const SupervisorElsewhere&) = delete;

    [[nodiscard]] DWORD Pid() const { return supervisor_.Pid(); }
    /// Returns the id of the process that it has started; 0 if it was not started.
    [[nodiscard]] DWORD Child() const { return child_; }

    /// Ends the supervisor; its child runs on.
    void Kill() { supervisor_.Kill(); }

private:
    static std::string CopyPrograms(const TempFolder& folder);

    const TempFolder folder_;
    ChildProcess supervisor_;
    DWORD child_ = 0;
};

} // namespace vqrx::test
