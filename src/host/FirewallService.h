#pragma once

#include "ILogger.h"

#include <cstdint>
#include <functional>

namespace vqrx::host::v0 {

/// Sleeps for a number of seconds. Tests pass a function that only counts.
using SleepSeconds = std::function<void(std::uint32_t seconds)>;

/// Blocks the calling thread for a number of seconds.
void SleepForSeconds(std::uint32_t seconds);

/// The length of a pause that doubles each time: 1, 2, 4, 8, ... seconds.
class DoublingPause {
public:
    [[nodiscard]] std::uint32_t Seconds() const noexcept { return seconds_; }
    /// Doubles the pause. At 2^30 seconds (34 years) it stays as it is.
    void Double() noexcept { seconds_ = seconds_ < (1U << 30) ? seconds_ * 2 : seconds_; }

private:
    std::uint32_t seconds_ = 1;
};

/// Waits without limit until the Windows firewall service runs.
/// @param sleep  called for each wait
/// @return true if the service runs; false, and a line in the log, if there is no such service, if
///         it is disabled, or if its state cannot be read
[[nodiscard]] bool WaitForFirewallService(log::i_logger::v0::ILogger* logger,
                                          const SleepSeconds& sleep = SleepForSeconds);

} // namespace vqrx::host::v0
