#pragma once

#include "log_perf/PerformanceSample.h"

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// part × 100 / whole in signed 64-bit arithmetic that wraps instead of overflowing; whole is not
/// 0.
std::int64_t PercentOf(std::int64_t part, std::int64_t whole) noexcept;

/// What the machine did between two samples.
struct SystemLoad {
    std::int64_t busyDelta = 0; ///< 100-ns units; 0: the counters stood still
    std::int64_t totalCpu = 0;  ///< percent of all processors
};
SystemLoad LoadBetween(const SystemTimes& previous, const SystemTimes& now) noexcept;

/// The process's share of all processors, percent. @param busyDelta  not 0
std::int64_t ProcessCpu(std::uint64_t previousKernelAndUser, std::uint64_t kernelAndUser,
                        std::int64_t busyDelta) noexcept;

/// Choices a second, from a counter that may have wrapped.
std::int32_t PoliticRate(std::uint32_t previous, std::uint32_t now,
                         std::uint32_t periodMs) noexcept;

} // namespace vqrx::log::log_perf::v2
