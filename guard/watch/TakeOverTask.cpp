#include "TakeOverTask.h"

#include <utility>

namespace vqrx::guard::v0 {
namespace {

constexpr unsigned kMostTries = 10;

} // namespace

TakeOverTask::TakeOverTask(std::shared_ptr<GuardLog> log)
    : log_(std::move(log))
{
}

void TakeOverTask::Begin(TakeOverOrder order)
{
    Abandon();
    order_ = std::move(order);
    isAbandoned_ = std::make_shared<std::atomic<bool>>(false);
    order_.isAbandoned = isAbandoned_;
    delays_ = {};
    static_cast<void>(delays_.NextMs(GetTickCount64())); // the first try is at once
    tries_ = 0;
    BeginTry();
}

void TakeOverTask::BeginTry()
{
    ++tries_;
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
        if (tries_ == kMostTries) {
            log_->Log(log::i_logger::v0::kLevelError,
                      "Hand-over: not complete, and not tried again before the next start of the "
                      "supervisor or the guard");
            *isComplete_ = true;
            return;
        }
        tryAgainTick_ = now + delays_.NextMs(now);
    } else if (now >= tryAgainTick_) {
        BeginTry();
    }
}

void TakeOverTask::Abandon() noexcept
{
    *isAbandoned_ = true;
}

} // namespace vqrx::guard::v0
