#pragma once

#include "CheckCounter.h"

#include <chrono>
#include <string>

namespace vqrx::guard::v0 {

/// The result of CheckSupervisor().
struct SupervisorCheck {
    CheckResult result = CheckResult::kUnknown;
    std::string detail; ///< for people, UTF-8: why the call failed or cannot be made; may be empty
    bool isInTime = true; ///< false: nobody answered within the limit, not even with an error
};

/// Returns whether an object is published under the supervisor's name in the Running Object Table.
/// Does not call the object. The calling thread must be a member of COM.
[[nodiscard]] bool IsPublished() noexcept;

/// Connects to the supervisor, and asks it to detach a daemon id that it never gives out: that
/// changes nothing and writes no record to the log. Both happen on a thread of its own, which runs
/// on if the supervisor does not answer.
/// @param limit  the longest wait for the answer
/// @throws std::system_error if Windows starts no thread; std::bad_alloc
[[nodiscard]] SupervisorCheck CheckSupervisor(std::chrono::milliseconds limit);

} // namespace vqrx::guard::v0
