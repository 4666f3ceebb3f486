#include "KernelObject.h"
#include "PatchableFunction.h"

using namespace fake_windows;

namespace {

class Event final : public KernelObject {
public:
    Event(bool manualReset, bool signalled) noexcept
        : manualReset_(manualReset)
        , signalled_(signalled)
    {
    }
    bool Signal() noexcept override
    {
        const std::lock_guard lock(mutex_);
        signalled_ = true;
        WakeAll();
        return true;
    }
    void Reset() noexcept
    {
        const std::lock_guard lock(mutex_);
        signalled_ = false;
    }

private:
    bool IsSignalled() const noexcept override { return signalled_; }
    void Take() noexcept override { signalled_ = manualReset_; }

    const bool manualReset_;
    bool signalled_;
};

class Semaphore final : public KernelObject {
public:
    Semaphore(LONG count, LONG maximum) noexcept
        : count_(count)
        , maximum_(maximum)
    {
    }
    bool Add(LONG count, LONG* previous) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (count <= 0 || count > maximum_ - count_) {
            return false;
        }
        if (previous != nullptr) {
            *previous = count_;
        }
        count_ += count;
        WakeAll();
        return true;
    }
    bool Signal() noexcept override { return Add(1, nullptr); }

private:
    bool IsSignalled() const noexcept override { return count_ > 0; }
    void Take() noexcept override { --count_; }

    LONG count_;
    const LONG maximum_;
};

// On Windows a name shares an object between processes. The fake has only the test program, so it
// refuses names.
bool RefuseName(const char* name) noexcept
{
    if (name != nullptr) {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    }
    return name != nullptr;
}

} // namespace

DM_FAKE(HANDLE, CreateEventA,
        (SECURITY_ATTRIBUTES * security, BOOL manualReset, BOOL initial, const char* name),
        (security, manualReset, initial, name))
{
    static_cast<void>(security);
    return RefuseName(name) ? nullptr : OpenHandle(new Event(manualReset != 0, initial != 0));
}

DM_FAKE(BOOL, SetEvent, (HANDLE event), (event))
{
    const ObjectReference object = FromHandle(event);
    auto* const self = As<Event>(object);
    return self != nullptr && self->Signal() ? TRUE : FALSE;
}

DM_FAKE(BOOL, ResetEvent, (HANDLE event), (event))
{
    const ObjectReference object = FromHandle(event);
    auto* const self = As<Event>(object);
    if (self == nullptr) {
        return FALSE;
    }
    self->Reset();
    return TRUE;
}

DM_FAKE(HANDLE, CreateSemaphoreA,
        (SECURITY_ATTRIBUTES * security, LONG initial, LONG maximum, const char* name),
        (security, initial, maximum, name))
{
    static_cast<void>(security);
    if (maximum <= 0 || initial < 0 || initial > maximum) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return RefuseName(name) ? nullptr : OpenHandle(new Semaphore(initial, maximum));
}

DM_FAKE(BOOL, ReleaseSemaphore, (HANDLE semaphore, LONG count, LONG* previous),
        (semaphore, count, previous))
{
    const ObjectReference object = FromHandle(semaphore);
    auto* const self = As<Semaphore>(object);
    if (self == nullptr) {
        return FALSE;
    }
    if (!self->Add(count, previous)) {
        SetLastError(ERROR_TOO_MANY_POSTS);
        return FALSE;
    }
    return TRUE;
}
