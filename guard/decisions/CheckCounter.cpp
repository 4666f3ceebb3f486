#include "CheckCounter.h"

namespace vqrx::guard::v0 {

bool CheckCounter::Notice(CheckResult result) noexcept
{
    if (result == CheckResult::kAnswers) {
        counts_ = {};
    }
    ++counts_[static_cast<std::size_t>(result)];
    last_ = result;
    const std::uint32_t limit = Limit(result);
    return limit != 0 && Count() >= limit;
}

std::uint32_t CheckCounter::Count() const noexcept
{
    const auto countOf = [this](CheckResult result) {
        return counts_[static_cast<std::size_t>(result)];
    };
    if (last_ == CheckResult::kBusy || last_ == CheckResult::kWithdrawn) {
        return countOf(CheckResult::kSilent) + countOf(CheckResult::kBusy) +
               countOf(CheckResult::kWithdrawn);
    }
    return countOf(last_);
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
