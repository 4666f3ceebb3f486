#pragma once

#include "BackgroundTask.h"
#include "GuardLog.h"
#include "TakeOver.h"
#include "TakeOverTries.h"

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>

namespace vqrx::guard::v0 {

/// Hands over on a thread of its own, so that the watch goes on meanwhile. If a hand-over is not
/// complete, for example because WMI is not ready after power-on, tries again without end, see
/// TakeOverTries. All functions on one thread.
class TakeOverTask {
public:
    /// @param log        shared with the thread, which may run on after this object
    /// @param longestMs  see TakeOverTries
    TakeOverTask(std::shared_ptr<GuardLog> log, DWORD longestMs);

    /// Begins the first try for a supervisor that has just been published.
    /// @param order  its isAbandoned is replaced: Abandon sets it
    void Begin(TakeOverOrder order);

    /// Begins the next try if the last one was not complete and its wait is over. Call it often.
    void TryAgain();

    /// Lets the thread do nothing more. Call it as soon as the supervisor has ended, before another
    /// one is started.
    void Abandon() noexcept;

    /// Waits at most `limitMs` milliseconds until the thread has ended.
    /// @param onWaiting  called about every second meanwhile; may be empty
    void Wait(DWORD limitMs, const std::function<void()>& onWaiting) const;

private:
    void BeginTry();

    std::shared_ptr<GuardLog> log_;
    TakeOverOrder order_;
    std::shared_ptr<std::atomic<bool>> isAbandoned_ = std::make_shared<std::atomic<bool>>(true);
    std::shared_ptr<std::atomic<bool>> isComplete_ = std::make_shared<std::atomic<bool>>(true);
    BackgroundTask task_;
    DWORD longestMs_;
    TakeOverTries tries_;        // for this supervisor
    ULONGLONG tryAgainTick_ = 0; // of the next try; 0: none is planned
};

} // namespace vqrx::guard::v0
