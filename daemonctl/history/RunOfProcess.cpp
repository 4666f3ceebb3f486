#include "RunOfProcess.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// Windows and the supervisor read the time of a start from clocks of different resolution.
constexpr std::int64_t kStartGrainMs = 1000;

} // namespace

bool IsRunOf(const SupervisorRun& run, const StartOfSupervisor& start) noexcept
{
    if (start.lastNumberBefore && run.beginningSeen && run.firstNumber &&
        *run.firstNumber > *start.lastNumberBefore) {
        return true;
    }
    const std::int64_t latestMs = std::max(run.startedMs.value_or(run.firstMs), run.lastMs);
    return latestMs + kStartGrainMs >= start.createdMs;
}

} // namespace vqrx::client::v0
