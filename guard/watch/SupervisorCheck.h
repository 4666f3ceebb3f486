#pragma once

#include "BackgroundTask.h"
#include "CheckCounter.h"

#include <chrono>
#include <memory>
#include <string>

namespace vqrx::guard::v0 {

/// The result of SupervisorChecker::Check().
struct SupervisorCheck {
    CheckResult result = CheckResult::kUnknown;
    std::string detail; ///< for people, UTF-8: why the call failed or cannot be made; may be empty
    bool isInTime = true; ///< false: nobody answered within the limit, not even with an error
};

/// Returns whether an object is published under the supervisor's name in the Running Object Table.
/// Does not call the object. The calling thread must be a member of COM.
[[nodiscard]] bool IsPublished() noexcept;

/// Checks one supervisor, again and again. For one thread.
class SupervisorChecker {
public:
    /// Connects to the supervisor, and asks it to detach a daemon id that it never gives out: that
    /// changes nothing and writes no record to the log. Both happen on a thread of its own, which
    /// runs on if the supervisor does not answer. While a thread of an earlier check still waits
    /// for the connection, this call starts none and waits for that one. So a supervisor that hangs
    /// holds one thread of its guard, not one for each check.
    /// @param limit  the longest wait for the answer
    /// @return kUnknown if Windows starts no thread
    /// @throws std::bad_alloc
    [[nodiscard]] SupervisorCheck Check(std::chrono::milliseconds limit);

private:
    struct Question;
    std::shared_ptr<Question> question_; // the one without an answer; shared with its thread
    BackgroundTask task_;
};

} // namespace vqrx::guard::v0
