#pragma once

#include <cstdint>

namespace vqrx::guard::v0 {

/// Decides when a hand-over that was not complete is tried again: after 1, 2, 4, ... seconds, then
/// every minute, and after about an hour every ten minutes, without end. The log is a ring, and a
/// try may write a record to it. Tries every minute for days would overwrite the records of the
/// daemons that are to be handed over. Pure; for one thread.
class TakeOverTries {
public:
    /// @param longestMs  the wait within the first hour, milliseconds; only tests change it
    explicit TakeOverTries(std::uint32_t longestMs = 60000) noexcept
        : longestMs_(longestMs)
    {
    }

    /// Notes a try that was not complete.
    /// @return milliseconds to wait before the next one
    [[nodiscard]] std::uint32_t NextMs() noexcept;

    /// Returns whether the log is to say now that the tries go on: once, after the tenth one.
    [[nodiscard]] bool IsToBeReported() const noexcept;

private:
    std::uint32_t longestMs_;
    std::uint32_t waitMs_ = 0; // before the last try
    std::uint32_t tries_ = 0;  // that were not complete
};

} // namespace vqrx::guard::v0
