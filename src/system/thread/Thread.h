#pragma once

#include "win32/UniqueHandle.h"

#include <functional>
#include <memory>

namespace vqrx::system::thread::v1 {

/// Runs one callable on a new Windows thread, from construction on.
/// There is no join: whoever must know that the body has returned waits on Handle().
class Thread {
public:
    /// Copies body and starts the thread. When Windows refuses, Handle() is null and nothing runs;
    /// nothing is thrown for that. An empty body raises std::bad_function_call on the new thread.
    /// What a body throws ends that thread, with exit code 1 instead of 0, and nothing else.
    explicit Thread(std::function<void()> body);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Does not wait. A body that still runs goes on, and the callable lives until it has returned.
    virtual ~Thread();

    /// For waiting; null when the thread could not be started. Valid as long as this object.
    HANDLE Handle() const noexcept { return handle_.Get(); }
    unsigned int Id() const noexcept { return threadId_; }

private:
    std::shared_ptr<const std::function<void()>> body_; // shared with the running thread
    win32::v1::UniqueKernelHandle handle_;
    unsigned int threadId_ = 0;
};

} // namespace vqrx::system::thread::v1
