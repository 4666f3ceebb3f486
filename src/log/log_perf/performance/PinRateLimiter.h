#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Counts the notices of one output pin and decides which of them to log.
/// Pure; takes no lock: the owner keeps it inside the statistics lock and supplies the tick.
class PinRateLimiter {
public:
    /// The first window of silence begins at once.
    /// @param windowMs  silence after a logged notice, milliseconds
    /// @param nowTick   system tick, milliseconds, wraps after 49.7 days
    PinRateLimiter(std::uint32_t windowMs, std::uint32_t nowTick) noexcept
        : windowMs_(windowMs)
        , lastLoggedTick_(nowTick)
    {
    }

    /// Counts one notice.
    /// @param nowTick  as in the constructor
    /// @return how many notices the line to log stands for; 0 = log nothing
    [[nodiscard]] std::uint32_t Notice(std::uint32_t nowTick) noexcept
    {
        if (nowTick - lastLoggedTick_ < windowMs_) {
            ++suppressed_;
            return 0;
        }
        const std::uint32_t represented = suppressed_ + 1;
        suppressed_ = 0;
        lastLoggedTick_ = nowTick;
        return represented;
    }

private:
    std::uint32_t windowMs_;
    std::uint32_t lastLoggedTick_;
    std::uint32_t suppressed_ = 0;
};

} // namespace vqrx::log::log_perf::v2
