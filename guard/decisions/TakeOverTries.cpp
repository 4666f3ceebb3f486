#include "TakeOverTries.h"

#include <algorithm>

namespace vqrx::guard::v0 {
namespace {

constexpr std::uint32_t kFirstTryAgainMs = 1000;
constexpr std::uint32_t kReportedTry = 10;
constexpr std::uint32_t kTriesOfAnHour = 70; // ten within four minutes, then one a minute
constexpr std::uint32_t kLaterFactor = 10;

} // namespace

std::uint32_t TakeOverTries::NextMs() noexcept
{
    ++tries_;
    if (tries_ >= kTriesOfAnHour) {
        return longestMs_ * kLaterFactor;
    }
    waitMs_ = std::min(waitMs_ == 0 ? kFirstTryAgainMs : waitMs_ * 2, longestMs_);
    return waitMs_;
}

bool TakeOverTries::IsToBeReported() const noexcept
{
    return tries_ == kReportedTry;
}

} // namespace vqrx::guard::v0
