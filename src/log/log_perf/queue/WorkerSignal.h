#pragma once

#include "log_perf/queue/WaitingCount.h"
#include "win32/UniqueHandle.h"

#include <atomic>
#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Wakes the logger's worker: counts the records that wait, and carries the request to stop.
/// It calls the kernel only if the worker sleeps or must be woken. A kernel call for every record
/// would cost a caller many times the rest of its log call.
/// If the kernel objects cannot be made, every Wait fails at once.
class WorkerSignal {
public:
    /// What ended a Wait.
    enum class Result {
        kStop,     ///< Stop was called; returned once per call
        kRecord,   ///< the count was above 0 and is now lower by 1
        kTimedOut, ///< the time passed without a record and without Stop
        kFailed    ///< the system cannot wait; records may be waiting, Stop may have been called
    };

    /// Makes the kernel objects. Does not report whether it could.
    WorkerSignal() noexcept;

    /// Adds one to the count. Any thread, after the record was queued.
    void Post() noexcept;

    /// Asks the worker to stop. Any thread.
    void Stop() noexcept;

    /// Waits for a record or for Stop. If both are there, it returns kStop first.
    /// Worker thread only.
    /// @param timeoutMs  milliseconds, or INFINITE
    [[nodiscard]] Result Wait(std::uint32_t timeoutMs) noexcept;

private:
    /// Looks for a record for a short time, without sleeping.
    /// @param timeoutMs  on return the time that is left, milliseconds
    [[nodiscard]] bool TakeSoon(std::uint32_t& timeoutMs) noexcept;
    [[nodiscard]] Result SleepFor(std::uint32_t timeoutMs) noexcept;
    [[nodiscard]] Result WaitInKernel(std::uint32_t timeoutMs) noexcept;

    WaitingCount count_; // of the records; the semaphore only wakes the worker
    bool busy_ = false;  // worker thread only: the last Wait returned a record
    std::atomic<bool> stopping_ = false;
    system::win32::v1::UniqueKernelHandle semaphore_;
    system::win32::v1::UniqueKernelHandle stopEvent_; // auto-reset
};

} // namespace vqrx::log::log_perf::v2
