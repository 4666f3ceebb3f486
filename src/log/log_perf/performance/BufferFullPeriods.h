#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// How BufferFullPeriods judges the notices of full buffers.
struct BufferFullSettings {
    std::uint32_t stepMs = 1000; ///< time that one Check adds, milliseconds
    std::uint32_t threshold = 0; ///< notices in one period from which the period is bad
    /// Bad periods in a row after which a restart is needed; 0: needed from the first Check on.
    std::uint32_t maximumPeriods = 0;
    std::uint32_t judgeAfterMs = 0; ///< time before the first period is judged, milliseconds
};

/// Counts the notices of full buffers of all pins and judges them period by period. A period is the
/// time between two calls of Check.
/// Pure; takes no lock: the owner keeps it inside the buffer-full lock.
class BufferFullPeriods {
public:
    /// Replaces the settings. Counts and the need for a restart are kept.
    void Configure(const BufferFullSettings& settings) noexcept { settings_ = settings; }

    /// Counts one notice.
    void Notice() noexcept { ++total_; }

    /// Ends a period and judges its notices. Until judgeAfterMs have passed (each call adds
    /// stepMs), it judges nothing. The need for a restart is never cleared.
    void Check() noexcept
    {
        if (elapsedMs_ < settings_.judgeAfterMs) {
            elapsedMs_ += settings_.stepMs;
        } else {
            lastDelta_ = total_ - lastTotal_;
            periodsOverThreshold_ =
                lastDelta_ < settings_.threshold ? 0 : periodsOverThreshold_ + 1;
        }
        lastTotal_ = total_;
        if (periodsOverThreshold_ >= settings_.maximumPeriods) {
            needRestart_ = true;
        }
    }

    /// Notices in the period that was judged last.
    [[nodiscard]] std::uint64_t LastDelta() const noexcept { return lastDelta_; }
    /// Bad periods in a row, up to now.
    [[nodiscard]] std::uint64_t PeriodsOverThreshold() const noexcept
    {
        return periodsOverThreshold_;
    }
    /// Whether there were ever BufferFullSettings::maximumPeriods bad periods in a row.
    [[nodiscard]] bool NeedRestart() const noexcept { return needRestart_; }

private:
    std::uint64_t lastTotal_ = 0;
    std::uint64_t total_ = 0;
    std::uint64_t periodsOverThreshold_ = 0;
    std::uint64_t lastDelta_ = 0;
    std::uint64_t elapsedMs_ = 0;
    BufferFullSettings settings_;
    bool needRestart_ = false;
};

} // namespace vqrx::log::log_perf::v2
