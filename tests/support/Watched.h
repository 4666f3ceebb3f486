#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace vqrx::test {

/// A value that some threads change and others wait for. Tests use it in place of
/// std::atomic::wait, std::latch and std::counting_semaphore: on Windows libstdc++ 12 loses a
/// notification that comes between the look at the value and the wait (bits/atomic_wait.h,
/// _M_do_wait).
template <typename Value>
class Watched {
public:
    /// The longest wait of WaitUntil. Only a failure reaches it.
    static constexpr std::chrono::seconds kDeadline{180};

    explicit Watched(Value value)
        : value_(std::move(value))
    {
    }

    /// Returns a copy of the present value. Any thread.
    [[nodiscard]] Value Get() const
    {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    /// Calls change(value) and wakes the waiting threads.
    template <typename Change>
    void Apply(Change change)
    {
        const std::lock_guard lock(mutex_);
        change(value_);
        changed_.notify_all();
    }

    /// Waits until holds(value) is true.
    /// @return false if it is not true at the deadline
    template <typename Condition>
    [[nodiscard]] bool WaitUntil(Condition holds) const
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [&] { return holds(value_); });
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Value value_;
};

} // namespace vqrx::test
