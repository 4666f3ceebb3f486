#include "KernelObject.h"

namespace fake_windows {

void Waiter::Wake() noexcept
{
    const std::lock_guard lock(mutex_);
    woken_ = true;
    changed_.notify_one();
}

bool Waiter::Wait(const std::chrono::steady_clock::time_point* deadline)
{
    std::unique_lock lock(mutex_);
    const auto woken = [this] { return woken_; };
    if (deadline == nullptr) {
        changed_.wait(lock, woken);
    } else if (!changed_.wait_until(lock, *deadline, woken)) {
        return false;
    }
    woken_ = false;
    return true;
}

bool KernelObject::TakeOrEnlist(WaiterLink* link) noexcept
{
    const std::lock_guard lock(mutex_);
    if (IsSignalled()) {
        Take();
        return true;
    }
    if (link != nullptr) {
        link->previous = nullptr;
        link->next = waiters_;
        if (waiters_ != nullptr) {
            waiters_->previous = link;
        }
        waiters_ = link;
    }
    return false;
}

void KernelObject::Remove(WaiterLink& link) noexcept
{
    const std::lock_guard lock(mutex_);
    (link.previous != nullptr ? link.previous->next : waiters_) = link.next;
    if (link.next != nullptr) {
        link.next->previous = link.previous;
    }
}

void KernelObject::WakeAll() noexcept
{
    for (WaiterLink* link = waiters_; link != nullptr; link = link->next) {
        link->waiter->Wake();
    }
}

} // namespace fake_windows
