#pragma once

#include "HeldProcess.h"
#include "Timeline.h"

#include <cstdint>
#include <vector>

namespace vqrx::guard::v0 {

/// Former supervisors that run although their program is not the installed one, for example because
/// a new version lies in another folder. Such a process has the name of the supervisor's program,
/// and has started a process that the log names. Each is kept open, so that Windows does not give
/// its id to another process meanwhile.
class SupervisorsElsewhere {
public:
    /// Finds the former supervisors of other folders that run now.
    /// @param timeline  of the log; must be believed (TakeOver), because whoever writes it could
    ///                  let the guard wait for any process of that name
    /// @throws client::v0::ProcessListUnreadable; std::bad_alloc
    explicit SupervisorsElsewhere(const client::v0::Timeline& timeline);

    /// Returns whether one of them still runs.
    [[nodiscard]] bool OneRuns() const;

    /// Waits until all have ended, at most `limitMs` milliseconds. @return whether all have ended
    [[nodiscard]] bool WaitForEnd(std::uint64_t limitMs) const;

private:
    std::vector<client::v0::HeldProcess> processes_;
};

} // namespace vqrx::guard::v0
