#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Decides when the next report is due. Pure: the caller supplies the tick. One thread.
/// Ticks are GetTickCount()'s: milliseconds that wrap after 49.7 days. Only differences of ticks
/// count, so that the wrap neither delays a report nor causes a burst of them.
class ReportClock {
public:
    /// The first report is due one period after tick 0. @param periodMs  milliseconds
    explicit ReportClock(std::uint32_t periodMs) noexcept
        : periodMs_(periodMs)
    {
    }

    /// Starts a new period.
    void Restart(std::uint32_t nowTick) noexcept { lastReportTick_ = nowTick; }

    /// @return milliseconds until the next report is due; 0 if it is due already
    [[nodiscard]] std::uint32_t TimeUntilDue(std::uint32_t nowTick) const noexcept
    {
        const std::uint32_t elapsed = nowTick - lastReportTick_;
        return elapsed < periodMs_ ? periodMs_ - elapsed : 0;
    }

private:
    std::uint32_t lastReportTick_ = 0;
    std::uint32_t periodMs_;
};

} // namespace vqrx::log::log_perf::v2
