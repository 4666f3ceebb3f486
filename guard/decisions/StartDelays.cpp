#include "StartDelays.h"

#include <algorithm>

namespace vqrx::guard::v0 {
namespace {

constexpr std::uint32_t kFirstWaitMs = 1000;
constexpr std::uint32_t kLongestWaitMs = 60000;
constexpr std::uint64_t kQuietMs = 10ULL * 60 * 1000;

} // namespace

std::uint32_t StartDelays::NextMs(std::uint64_t nowMs) noexcept
{
    if (lastMs_ && nowMs >= *lastMs_ + kQuietMs) {
        nextMs_ = 0;
    }
    const std::uint32_t wait = nextMs_;
    nextMs_ = wait == 0 ? kFirstWaitMs : std::min(wait * 2, kLongestWaitMs);
    lastMs_ = nowMs + wait; // the quiet time begins with the start
    return wait;
}

} // namespace vqrx::guard::v0
