#pragma once

#include "log_perf/performance/PerformanceSample.h"

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// part × 100 / whole in signed 64-bit arithmetic, which wraps instead of overflowing.
/// @param whole  not 0
[[nodiscard]] std::int64_t PercentOf(std::int64_t part, std::int64_t whole) noexcept;

/// Load of the machine between two samples.
struct SystemLoad {
    std::int64_t totalDelta = 0; ///< growth of SystemTimes::total, 100-ns units; 0: it stood still
    std::int64_t totalCpu = 0;   ///< share of all processors, percent; 100 if totalDelta is 0
};

/// The load between two samples of the machine. Counters that wrapped or ran backwards are
/// accepted.
[[nodiscard]] SystemLoad LoadBetween(const SystemTimes& previous, const SystemTimes& now) noexcept;

/// The process's share of all processors, percent.
/// @param previousKernelAndUser  processor time of the process at the last report, 100-ns units
/// @param kernelAndUser          its processor time now, 100-ns units
/// @param totalDelta              as in SystemLoad, not 0
[[nodiscard]] std::int64_t ProcessCpu(std::uint64_t previousKernelAndUser,
                                      std::uint64_t kernelAndUser,
                                      std::int64_t totalDelta) noexcept;

/// Growth of a counter per second. The counter may have wrapped.
/// @param periodMs  time between the two values, milliseconds; 0 gives 0
[[nodiscard]] std::int32_t PoliticRate(std::uint32_t previous, std::uint32_t now,
                                       std::uint32_t periodMs) noexcept;

} // namespace vqrx::log::log_perf::v2
