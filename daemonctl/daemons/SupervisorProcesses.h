#pragma once

#include "HeldProcess.h"
#include "ProcessFacts.h"
#include "Timeline.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vqrx::client::v0 {

/// How long to wait for the end of a supervisor that was ordered to end, milliseconds. The
/// supervisor's own limits are 90 s for calls of clients and 10 s for leaving COM.
inline constexpr std::uint32_t kSupervisorEndMs = 120000;

/// Finds the processes that run the installed supervisor's program as an expected user: the
/// supervisor, and any former supervisor that has not ended yet. A process that only has the name
/// of the program does not count, whoever runs it.
/// - If this user may examine no such process, the processes that have the program's name and that
///   this user may not examine count. The supervisor is one of them.
/// - If nothing on this machine names the installed program, every process of the name counts.
/// @throws ProcessListUnreadable; std::bad_alloc
[[nodiscard]] std::vector<std::uint32_t> FindSupervisors();

/// Returns whether a process has the name of the supervisor's program, whoever runs it. Cheaper
/// than FindSupervisors(), and not to be trusted.
/// @throws ProcessListUnreadable
[[nodiscard]] bool IsSupervisorListed();

/// The processes that FindSupervisors() finds when this object is made, and those that
/// AddElsewhere() finds. Each process is kept open, so that Windows does not give its id to another
/// process meanwhile.
class SupervisorProcesses {
public:
    /// @throws ProcessListUnreadable; std::bad_alloc; CodePageError if a path cannot be converted
    ///         to UTF-8
    SupervisorProcesses();

    /// Adds the former supervisors that run a program of another folder (SupervisorsElsewhere).
    /// @param timeline  of the log; must be believed
    /// @throws ProcessListUnreadable; std::bad_alloc
    void AddElsewhere(const Timeline& timeline);

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
