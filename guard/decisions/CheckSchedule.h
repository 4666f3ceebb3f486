#pragma once

#include <cstdint>

namespace vqrx::guard::v0 {

/// Decides when the next check of the supervisor begins: one interval after the begin of the check
/// before. The wait for an answer is as long as the interval. So a check that gets no answer is
/// followed by the next one at once, and a supervisor whose COM is silent is found after 30 to 40 s
/// (CheckCounter). Pure; for one thread.
class CheckSchedule {
public:
    /// @param intervalMs  milliseconds between the begins of two checks
    /// @param nowMs       a steady clock; the first check is due one interval after this time
    CheckSchedule(std::uint64_t intervalMs, std::uint64_t nowMs) noexcept
        : intervalMs_(intervalMs)
        , dueMs_(nowMs + intervalMs)
    {
    }

    /// Returns whether a check is due. If so, it counts as begun at `nowMs`.
    [[nodiscard]] bool BeginIfDue(std::uint64_t nowMs) noexcept;

private:
    std::uint64_t intervalMs_;
    std::uint64_t dueMs_;
};

} // namespace vqrx::guard::v0
