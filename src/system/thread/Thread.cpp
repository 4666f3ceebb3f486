#include "thread/Thread.h"

#include <process.h>

namespace vqrx::system::thread::v1 {
namespace {

constexpr DWORD kPauseAfterRefusalMs = 10;

using SharedBody = std::shared_ptr<const std::function<void()>>;

// Catches every exception, because an exception that leaves a thread ends the program.
unsigned __stdcall ThreadEntry(void* argument) noexcept
{
    const std::unique_ptr<SharedBody> body(static_cast<SharedBody*>(argument));
    try {
        (**body)();
        return 0;
    } catch (...) {
        return 1;
    }
}

} // namespace

void WaitForEnd(HANDLE thread) noexcept
{
    while (thread != nullptr && WaitForSingleObject(thread, INFINITE) == WAIT_FAILED) {
        Sleep(kPauseAfterRefusalMs);
    }
}

Thread::Thread(std::function<void()> body)
    : body_(std::make_shared<const std::function<void()>>(std::move(body)))
{
    auto argument = std::make_unique<SharedBody>(body_);
    const auto created = _beginthreadex(nullptr, 0, ThreadEntry, argument.get(), 0, &threadId_);
    handle_.Reset(reinterpret_cast<HANDLE>(created)); // NOLINT(performance-no-int-to-ptr)
    if (handle_) {
        static_cast<void>(argument.release()); // the new thread owns it now
    }
}

Thread::~Thread()
{
    if (handle_) {
        WaitForSingleObject(handle_.Get(), 0);
    }
}

} // namespace vqrx::system::thread::v1
