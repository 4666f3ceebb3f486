#pragma once

#include "log_perf/Timestamp.h"

#include <atomic>
#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// The time zone's part of a timestamp, known for one minute: zones change and daylight saving
/// begins and ends with a minute. Any thread, without a lock.
class ZoneOfMinute {
public:
    /// Completes a timestamp. @return false, with nothing changed, when its minute is another
    bool Fill(Timestamp& timestamp) const noexcept
    {
        const std::uint64_t known = known_.load(std::memory_order_relaxed);
        if (known >> 32 != MinuteOf(timestamp)) {
            return false;
        }
        timestamp.timezone = static_cast<short>(known >> 16);
        timestamp.dstflag = static_cast<short>(known);
        return true;
    }

    /// Holds for the minute of a complete timestamp.
    void Remember(const Timestamp& complete) noexcept
    {
        const std::uint64_t zone = static_cast<std::uint16_t>(complete.timezone);
        const std::uint64_t daylight = static_cast<std::uint16_t>(complete.dstflag);
        known_.store((MinuteOf(complete) << 32) | (zone << 16) | daylight,
                     std::memory_order_relaxed);
    }

private:
    // Never 0, the minute of which nothing is known.
    static std::uint64_t MinuteOf(const Timestamp& timestamp) noexcept
    {
        return static_cast<std::uint32_t>(timestamp.time / 60) | 0x80000000U;
    }

    std::atomic<std::uint64_t> known_ = 0;
};

} // namespace vqrx::log::log_perf::v2
