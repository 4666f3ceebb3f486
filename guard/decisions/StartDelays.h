#pragma once

#include <cstdint>
#include <optional>

namespace vqrx::guard::v0 {

/// Decides how long to wait before the supervisor is started again after it ended without an order:
/// not at all the first time, then 1, 2, 4, ... at most 60 seconds. After ten minutes without such
/// an end, the next wait is 0 again. Pure; for one thread.
class StartDelays {
public:
    /// Notes an end of the supervisor, or a start that failed.
    /// @param nowMs  a clock that never goes back, milliseconds
    /// @return milliseconds to wait before the next start
    [[nodiscard]] std::uint32_t NextMs(std::uint64_t nowMs) noexcept;

private:
    std::optional<std::uint64_t> lastMs_; // time of the end before this one, with its wait
    std::uint32_t nextMs_ = 0;
};

} // namespace vqrx::guard::v0
