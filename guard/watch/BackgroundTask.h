#pragma once

#include "thread/Thread.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <utility>

namespace vqrx::guard::v0 {

/// Runs a function on a thread of its own. The function must own everything that it uses, and catch
/// its exceptions: the thread may run on after this object is gone, for example in a call of a
/// supervisor that hangs.
class BackgroundTask {
public:
    /// A task that has nothing to do.
    BackgroundTask() = default;
    /// Starts the thread. If Windows starts none, the function is not called, and the task has
    /// ended.
    /// @throws std::bad_alloc
    explicit BackgroundTask(std::function<void()> work)
        : thread_(std::make_unique<system::thread::v1::Thread>(std::move(work)))
    {
    }

    /// Waits at most `limitMs` milliseconds. @return whether the function has ended
    [[nodiscard]] bool Wait(DWORD limitMs) const noexcept
    {
        return !thread_ || thread_->Handle() == nullptr ||
               WaitForSingleObject(thread_->Handle(), limitMs) != WAIT_TIMEOUT;
    }

private:
    std::unique_ptr<system::thread::v1::Thread> thread_;
};

} // namespace vqrx::guard::v0
