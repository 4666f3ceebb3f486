#pragma once

#include "win32/UniqueHandle.h"

#include <functional>
#include <memory>

namespace vqrx::system::thread::v1 {

/// Waits without limit until a thread has ended. If Windows refuses the wait, asks again every 10
/// ms: the caller is about to destroy what the thread uses.
/// @param thread  null: returns at once
void WaitForEnd(HANDLE thread) noexcept;

/// Runs a function, the body, on a new Windows thread.
/// There is no join: wait on Handle() to know that the body has returned.
class Thread {
public:
    /// Starts a thread that calls body. The exit code of the thread is 0, or 1 if body throws an
    /// exception; an empty body throws std::bad_function_call on the new thread.
    /// If Windows cannot create a thread, Handle() is null and body is not called.
    /// @throws std::bad_alloc
    explicit Thread(std::function<void()> body);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Does not wait. If the body still runs, it continues; it is destroyed after it has returned.
    virtual ~Thread();

    /// For waiting; null if the thread could not be created. Owned by this object.
    [[nodiscard]] HANDLE Handle() const noexcept { return handle_.Get(); }
    /// The thread id that Windows gave; 0 if the thread could not be created.
    [[nodiscard]] unsigned int Id() const noexcept { return threadId_; }

private:
    std::shared_ptr<const std::function<void()>> body_; // shared with the running thread
    win32::v1::UniqueKernelHandle handle_;
    unsigned int threadId_ = 0;
};

} // namespace vqrx::system::thread::v1
