#pragma once

#include "log_perf/time/Timestamp.h"

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Processor time of the whole machine since its start, 100-ns units, summed over the processors.
struct SystemTimes {
    std::uint64_t idle = 0;
    std::uint64_t total = 0; ///< kernel + user; the kernel time includes the idle time
};

/// Figures of the process and the machine at one moment.
struct PerformanceSample {
    Timestamp time{};
    std::uint64_t kernelTime = 0;        ///< of the process, 100-ns units
    std::uint64_t userTime = 0;          ///< of the process, 100-ns units
    std::uint64_t workingSet = 0;        ///< bytes
    std::uint64_t pageFileUsage = 0;     ///< of the process, bytes
    std::uint64_t totalPageFile = 0;     ///< of the machine, bytes
    std::uint64_t availablePageFile = 0; ///< of the machine, bytes
    std::uint32_t handleCount = 0;       ///< open handles of the process
    SystemTimes system;

    /// Committed page file of the machine, bytes.
    [[nodiscard]] std::uint64_t Committed() const noexcept
    {
        return totalPageFile - availablePageFile;
    }
};

} // namespace vqrx::log::log_perf::v2
