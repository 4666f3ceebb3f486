#include "log_perf/performance/PerformanceArithmetic.h"

namespace vqrx::log::log_perf::v2 {
namespace {

std::int64_t Delta(std::uint64_t previous, std::uint64_t now) noexcept
{
    return static_cast<std::int64_t>(now - previous);
}

} // namespace

std::int64_t PercentOf(std::int64_t part, std::int64_t whole) noexcept
{
    const auto scaled = static_cast<std::int64_t>(static_cast<std::uint64_t>(part) * 100);
    if (whole == -1) { // the only division that can overflow
        return static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(scaled));
    }
    return scaled / whole;
}

SystemLoad LoadBetween(const SystemTimes& previous, const SystemTimes& now) noexcept
{
    SystemLoad load;
    load.totalDelta = Delta(previous.total, now.total);
    const std::uint64_t idleDelta = now.idle - previous.idle;
    load.totalCpu = load.totalDelta == 0
                        ? 100
                        : PercentOf(static_cast<std::int64_t>(
                                        static_cast<std::uint64_t>(load.totalDelta) - idleDelta),
                                    load.totalDelta);
    return load;
}

std::int64_t ProcessCpu(std::uint64_t previousKernelAndUser, std::uint64_t kernelAndUser,
                        std::int64_t totalDelta) noexcept
{
    return PercentOf(Delta(previousKernelAndUser, kernelAndUser), totalDelta);
}

std::int32_t PoliticRate(std::uint32_t previous, std::uint32_t now, std::uint32_t periodMs) noexcept
{
    if (periodMs == 0) {
        return 0;
    }
    const auto scaled = static_cast<std::int32_t>((now - previous) * 1000U);
    return static_cast<std::int32_t>(static_cast<std::int64_t>(scaled) /
                                     static_cast<std::int64_t>(periodMs));
}

} // namespace vqrx::log::log_perf::v2
