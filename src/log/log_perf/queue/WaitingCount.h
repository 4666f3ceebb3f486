#pragma once

#include <atomic>

namespace vqrx::log::log_perf::v2 {

/// The count of a semaphore for one waiting thread, the taker. It keeps the count in an atomic
/// number, so that the kernel's semaphore is needed only to wake the taker. The number is -1 if the
/// taker sleeps, or is about to sleep, and nothing was added since; any other number is the count.
class WaitingCount {
public:
    /// Adds one. Any thread.
    /// @return whether the taker sleeps: the caller then releases the kernel's semaphore once
    [[nodiscard]] bool Add() noexcept { return count_.fetch_add(1) < 0; }

    /// Takes one if the count is above 0. Taker only.
    /// @return whether one was taken
    [[nodiscard]] bool TryTake() noexcept
    {
        if (count_.load() <= 0) {
            return false;
        }
        count_.fetch_sub(1);
        return true;
    }

    /// Takes one, or marks the taker as asleep. Taker only.
    /// @return true if one was taken; false if the taker is now asleep: it waits for the kernel's
    ///         semaphore, and calls Wake when its wait has ended
    [[nodiscard]] bool TakeOrSleep() noexcept { return count_.fetch_sub(1) > 0; }

    /// Marks the taker as awake after a wait, whatever has ended it. Taker only.
    /// @return false if an Add came first: the taker has taken one. That thread has released the
    ///         kernel's semaphore or is about to. If something else has ended the wait, this
    ///         release ends a later wait, in which nothing may have been added
    [[nodiscard]] bool Wake() noexcept
    {
        long asleep = -1;
        return count_.compare_exchange_strong(asleep, 0);
    }

private:
    std::atomic<long> count_ = 0;
};

} // namespace vqrx::log::log_perf::v2
