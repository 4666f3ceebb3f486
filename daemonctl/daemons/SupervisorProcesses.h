#pragma once

#include "HeldProcess.h"
#include "ProcessFacts.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vqrx::client::v0 {

/// The processes that run a file named DaemonManager.exe when this object is made: the supervisor,
/// and any former supervisor that has not ended yet. Each process is kept open, so that Windows does
/// not give its id to another process meanwhile.
class SupervisorProcesses {
public:
    /// @throws ProcessListUnreadable; std::bad_alloc; CodePageError if a path cannot be converted to
    ///         UTF-8
    SupervisorProcesses();

    /// Returns the processes that still run, in the order of their creation. A process that this
    /// user may not open comes first.
    /// @throws the exceptions of the constructor
    [[nodiscard]] std::vector<ProcessFacts> Running() const;

    /// Waits until at most `count` of the processes run.
    /// @param limitMs  milliseconds to wait at most; 0 looks once
    /// @return whether at most `count` of the processes run
    /// @throws the exceptions of the constructor
    [[nodiscard]] bool WaitUntilAtMost(std::size_t count, std::uint64_t limitMs) const;

private:
    std::vector<HeldProcess> processes_;
};

} // namespace vqrx::client::v0
