#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// How long to wait until the next report is due, in milliseconds; 0 when it is due already.
/// Ticks are GetTickCount()'s and wrap after 49.7 days: only their difference counts, so that the
/// wrap neither delays a report nor makes a burst of them.
inline std::uint32_t TimeUntilReport(std::uint32_t lastReportTick, std::uint32_t periodMs,
                                     std::uint32_t nowTick) noexcept
{
    const std::uint32_t elapsed = nowTick - lastReportTick;
    return elapsed < periodMs ? periodMs - elapsed : 0;
}

} // namespace vqrx::log::log_perf::v2
