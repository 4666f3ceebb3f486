#include "CheckCounter.h"

namespace vqrx::guard::v0 {

bool CheckCounter::Notice(CheckResult result) noexcept
{
    count_ = result == last_ ? count_ + 1 : 1;
    last_ = result;
    const std::uint32_t limit = Limit(result);
    return limit != 0 && count_ >= limit;
}

std::uint32_t CheckCounter::Limit(CheckResult result) noexcept
{
    constexpr std::uint32_t silentChecks = 3;
    constexpr std::uint32_t longChecks = 15;
    switch (result) {
    case CheckResult::kSilent:
        return silentChecks;
    case CheckResult::kBusy:
    case CheckResult::kWithdrawn:
        return longChecks;
    case CheckResult::kAnswers:
    case CheckResult::kStranger:
    case CheckResult::kUnknown:
        break;
    }
    return 0;
}

} // namespace vqrx::guard::v0
