#pragma once

#include <atomic>

namespace vqrx::log::log_perf::v2 {

/// The count of a semaphore that one thread waits for, kept in front of the kernel's: the kernel is
/// needed only when that thread, the taker, sleeps. Below 0 it sleeps, or is about to.
class WaitingCount {
public:
    /// One more. Any thread.
    /// @return whether the taker sleeps: the kernel's semaphore is to be released once
    [[nodiscard]] bool Add() noexcept { return count_.fetch_add(1) < 0; }

    /// Taker only. @return whether there was one, which was taken
    [[nodiscard]] bool TryTake() noexcept
    {
        if (count_.load() <= 0) {
            return false;
        }
        count_.fetch_sub(1);
        return true;
    }

    /// Taker only. @return true: one was taken; false: the taker counts as asleep from now on, and
    /// either gets the kernel's semaphore or says with Wake that it got something else
    [[nodiscard]] bool TakeOrSleep() noexcept { return count_.fetch_sub(1) > 0; }

    /// Taker only. @return false when an Add came first: its release of the kernel's semaphore is
    /// there or about to come, and has to be waited for
    [[nodiscard]] bool Wake() noexcept
    {
        long asleep = -1;
        return count_.compare_exchange_strong(asleep, 0);
    }

private:
    std::atomic<long> count_ = 0;
};

} // namespace vqrx::log::log_perf::v2
