#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vqrx::guard::v0 {

/// What one check of the supervisor showed.
enum class CheckResult {
    kAnswers,   ///< a call of the supervisor succeeded
    kSilent,    ///< COM in the supervisor did not answer in time, or the call failed
    kBusy,      ///< COM answered, but the supervisor did not serve a call in time
    kWithdrawn, ///< the supervisor's process runs, but its object is not published
    kStranger,  ///< another program's object is published under the supervisor's name
    kUnknown,   ///< the call cannot be made, so nothing is known
    // kUnknown stays last: it gives counts_ its size.
};

/// Decides from the checks of a supervisor whether it hangs. The checks begin 10 seconds
/// apart, and each waits at most 10 seconds for an answer (CheckSchedule). Pure; for one thread.
///
/// | Checks since the last answer | Why so many |
/// |---|---|
/// | 3 silent | COM answers at once, whatever the supervisor does |
/// | 15 silent, busy or withdrawn | a pass that starts many daemons may take a minute; a supervisor
/// that ends waits at most 90 s for its clients and 10 s for COM |
///
/// Only an answer begins the counts again: a supervisor that hangs may look silent at one check and
/// busy at the next.
class CheckCounter {
public:
    /// Notes the result of a check.
    /// @return whether the supervisor hangs
    [[nodiscard]] bool Notice(CheckResult result) noexcept;

    /// Counts checks since the last answer. After a busy or a withdrawn one: the silent, busy and
    /// withdrawn checks together. After another one: the checks with the same result.
    [[nodiscard]] std::uint32_t Count() const noexcept;

    /// Returns which count of checks with this result means that the supervisor hangs; 0 if this
    /// result never means that.
    [[nodiscard]] static std::uint32_t Limit(CheckResult result) noexcept;

private:
    CheckResult last_ = CheckResult::kAnswers;
    // Checks since the last answer, by result.
    std::array<std::uint32_t, static_cast<std::size_t>(CheckResult::kUnknown) + 1> counts_{};
};

} // namespace vqrx::guard::v0
