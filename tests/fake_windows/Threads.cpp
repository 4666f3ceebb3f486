#include "KernelObject.h"
#include "PatchableFunction.h"

#include <process.h>
#include <sched.h>

#include <cerrno>

using namespace fake_windows;

namespace {

std::atomic<DWORD> lastThreadId{0};
thread_local DWORD ownThreadId = 0;

DWORD NewThreadId() noexcept
{
    return lastThreadId.fetch_add(4, std::memory_order_relaxed) + 4;
}

/// A running or ended thread. It is signalled after its end.
class ThreadObject final : public KernelObject {
public:
    ThreadObject(unsigned (*entry)(void*), void* argument) noexcept
        : entry_(entry)
        , argument_(argument)
    {
    }

    DWORD Id() const noexcept { return id_; }

    [[nodiscard]] bool Start() noexcept
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
        AddReference(); // for the running thread
        pthread_t thread{};
        const int result = pthread_create(&thread, &attributes, &Run, this);
        pthread_attr_destroy(&attributes);
        if (result != 0) {
            Release();
        }
        return result == 0;
    }

    DWORD ExitCode() noexcept
    {
        const std::lock_guard lock(mutex_);
        return ended_ ? exitCode_ : STILL_ACTIVE;
    }

private:
    static void* Run(void* object) noexcept
    {
        const ObjectReference self(static_cast<ThreadObject*>(object));
        auto& thread = *static_cast<ThreadObject*>(object);
        ownThreadId = thread.id_;
        const DWORD code = thread.entry_(thread.argument_);
        const std::lock_guard lock(thread.mutex_);
        thread.exitCode_ = code;
        thread.ended_ = true;
        thread.WakeAll();
        return nullptr;
    }

    bool IsSignalled() const noexcept override { return ended_; }

    unsigned (*const entry_)(void*);
    void* const argument_;
    const DWORD id_ = NewThreadId();
    DWORD exitCode_ = 0;
    bool ended_ = false;
};

} // namespace

DM_FAKE(std::uintptr_t, _beginthreadex,
        (void* security, unsigned stackSize, unsigned (*entry)(void*), void* argument,
         unsigned flags, unsigned* threadId),
        (security, stackSize, entry, argument, flags, threadId))
{
    static_cast<void>(security);
    static_cast<void>(stackSize);
    if (flags != 0) {
        errno = EINVAL;
        return 0;
    }
    auto* const thread = new ThreadObject(entry, argument);
    const HANDLE handle = OpenHandle(thread);
    if (handle == nullptr) {
        errno = EAGAIN;
        return 0;
    }
    if (threadId != nullptr) {
        *threadId = thread->Id();
    }
    if (!thread->Start()) {
        CloseHandle(handle);
        errno = EAGAIN;
        return 0;
    }
    return reinterpret_cast<std::uintptr_t>(handle);
}

DM_FAKE(DWORD, GetCurrentThreadId, (), ())
{
    if (ownThreadId == 0) {
        ownThreadId = NewThreadId(); // _beginthreadex did not start this thread
    }
    return ownThreadId;
}

DM_FAKE(BOOL, GetExitCodeThread, (HANDLE thread, DWORD* code), (thread, code))
{
    const ObjectReference object = FromHandle(thread);
    auto* const self = As<ThreadObject>(object);
    if (self == nullptr) {
        return FALSE;
    }
    *code = self->ExitCode();
    return TRUE;
}

DM_FAKE(BOOL, SwitchToThread, (), ())
{
    sched_yield();
    return TRUE;
}
