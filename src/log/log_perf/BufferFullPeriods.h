#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// How full-buffer notices are judged over time.
struct BufferFullSettings {
    std::uint32_t stepMs = 1000;      ///< what one check adds to the elapsed time
    std::uint32_t threshold = 0;      ///< notices in a period that count as too many
    std::uint32_t maximumPeriods = 0; ///< so many bad periods in a row ask for a restart
    std::uint32_t periodLengthMs = 0; ///< time before the first period is judged
};

/// Counts the full-buffer notices of all pins and judges them period by period.
/// Pure; the caller holds the buffer-full lock.
class BufferFullPeriods {
public:
    void Configure(const BufferFullSettings& settings) noexcept { settings_ = settings; }

    void Notice() noexcept { ++total_; }

    /// Advances the period logic by one step. Once set, the wish for a restart stays.
    void Check() noexcept
    {
        if (elapsedMs_ < settings_.periodLengthMs) {
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

    std::uint64_t LastDelta() const noexcept { return lastDelta_; }
    std::uint64_t PeriodsOverThreshold() const noexcept { return periodsOverThreshold_; }
    bool NeedRestart() const noexcept { return needRestart_; }

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
