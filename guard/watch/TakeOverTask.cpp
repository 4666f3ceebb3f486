#include "TakeOverTask.h"

#include <utility>

namespace vqrx::guard::v0 {

TakeOverTask::TakeOverTask(std::shared_ptr<GuardLog> log, DWORD longestMs)
    : log_(std::move(log))
    , longestMs_(longestMs)
{
}

void TakeOverTask::Begin(TakeOverOrder order)
{
    Abandon();
    order_ = std::move(order);
    isAbandoned_ = std::make_shared<std::atomic<bool>>(false);
    order_.isAbandoned = isAbandoned_;
    tries_ = TakeOverTries(longestMs_);
    BeginTry();
}

void TakeOverTask::BeginTry()
{
    tryAgainTick_ = 0;
    isComplete_ = std::make_shared<std::atomic<bool>>(false);
    task_ = BackgroundTask([order = order_, log = log_, isComplete = isComplete_] {
        *isComplete = TakeOver(order, *log);
    });
}

void TakeOverTask::TryAgain()
{
    if (*isAbandoned_ || !task_.Wait(0) || *isComplete_) {
        return;
    }
    const ULONGLONG now = GetTickCount64();
    if (tryAgainTick_ == 0) {
        tryAgainTick_ = now + tries_.NextMs();
        if (tries_.IsToBeReported()) {
            log_->Log(log::i_logger::v0::kLevelError,
                      "Hand-over: not complete after 10 tries; tried again every minute, after an "
                      "hour every 10 minutes; the log shows what changes");
        }
    } else if (now >= tryAgainTick_) {
        BeginTry();
    }
}

void TakeOverTask::Wait(DWORD limitMs, const std::function<void()>& onWaiting) const
{
    constexpr DWORD progressMs = 1000;
    const ULONGLONG start = GetTickCount64();
    while (!task_.Wait(progressMs) && GetTickCount64() - start < limitMs) {
        if (onWaiting) {
            onWaiting();
        }
    }
}

void TakeOverTask::Abandon() noexcept
{
    *isAbandoned_ = true;
}

} // namespace vqrx::guard::v0
