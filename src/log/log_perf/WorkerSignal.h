#pragma once

#include "log_perf/WaitingCount.h"
#include "win32/UniqueHandle.h"

#include <atomic>
#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// What wakes the logger's worker: a count of the records that wait, and the wish that it end.
/// The kernel is asked only when the worker sleeps or is to be woken: for every record it would
/// cost the callers many times what the record costs them. Kernel objects that cannot be made are
/// no error here; every Wait then fails at once.
class WorkerSignal {
public:
    enum class Result {
        kStop,     ///< Stop was called; told once
        kRecord,   ///< the count was above 0, and is one less now
        kTimedOut, ///< neither, in the time given
        kFailed    ///< the system cannot wait; nothing is known of either
    };

    WorkerSignal() noexcept;

    /// One more record waits. Any thread, after the record was queued.
    void Post() noexcept;

    /// The worker is to end. Any thread.
    void Stop() noexcept;

    /// Stop comes before records when both are there. Worker thread only.
    Result Wait(std::uint32_t timeoutMs) noexcept;

private:
    /// @param timeoutMs  becomes what is left of it
    bool TakeSoon(std::uint32_t& timeoutMs) noexcept;
    Result SleepFor(std::uint32_t timeoutMs) noexcept;
    Result WaitInKernel(std::uint32_t timeoutMs) noexcept;

    WaitingCount count_; // of the records; the semaphore only wakes
    bool busy_ = false;  // worker thread only: the last thing it was told of was a record
    std::atomic<bool> stopping_ = false;
    system::win32::v1::UniqueKernelHandle semaphore_;
    system::win32::v1::UniqueKernelHandle stopEvent_; // auto-reset
};

} // namespace vqrx::log::log_perf::v2
