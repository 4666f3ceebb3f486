#pragma once

#include "ILogger.h"

#include <cstdint>
#include <functional>

namespace vqrx::host::v0 {

/// Sleeps for so many seconds; tests pass one that only counts.
using SleepSeconds = std::function<void(std::uint32_t seconds)>;

/// Really sleeps.
void SleepForSeconds(std::uint32_t seconds);

/// A pause that doubles without bound: 1, 2, 4, 8, ... seconds.
class DoublingPause {
public:
    std::uint32_t Seconds() const noexcept { return seconds_; }
    /// Stays where doubling would leave the number's range, 34 years on.
    void Double() noexcept { seconds_ = seconds_ < (1U << 30) ? seconds_ * 2 : seconds_; }

private:
    std::uint32_t seconds_ = 1;
};

/// Waits, without bound, until the Windows firewall service runs.
/// @return true when it runs; false, logged, when there is none, it is disabled or cannot be asked
bool WaitForFirewallService(log::i_logger::v0::ILogger* logger,
                            const SleepSeconds& sleep = SleepForSeconds);

} // namespace vqrx::host::v0
