#pragma once

#include "log_perf/time/Timestamp.h"

#include <atomic>
#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Remembers the time zone and the daylight flag of one minute. Both change only at the start of a
/// minute, so they are valid for all of it. Any thread; takes no lock.
class ZoneOfMinute {
public:
    /// Sets zone and daylight flag of a timestamp.
    /// @return false, with the timestamp unchanged, if it lies in another minute
    [[nodiscard]] bool Fill(Timestamp& timestamp) const noexcept
    {
        const std::uint64_t known = known_.load(std::memory_order_relaxed);
        if (known >> 32 != MinuteOf(timestamp)) {
            return false;
        }
        timestamp.timezone = static_cast<short>(known >> 16);
        timestamp.dstflag = static_cast<short>(known);
        return true;
    }

    /// Replaces the remembered minute by the one of this timestamp, whose fields are all set.
    void Remember(const Timestamp& complete) noexcept
    {
        const std::uint64_t zone = static_cast<std::uint16_t>(complete.timezone);
        const std::uint64_t daylight = static_cast<std::uint16_t>(complete.dstflag);
        known_.store((MinuteOf(complete) << 32) | (zone << 16) | daylight,
                     std::memory_order_relaxed);
    }

private:
    // Never 0: known_ is 0 while no minute is remembered.
    static std::uint64_t MinuteOf(const Timestamp& timestamp) noexcept
    {
        return static_cast<std::uint32_t>(timestamp.time / 60) | 0x80000000U;
    }

    // Bits 32 to 63: the minute; 16 to 31: the zone; 0 to 15: the daylight flag.
    std::atomic<std::uint64_t> known_ = 0;
};

} // namespace vqrx::log::log_perf::v2
