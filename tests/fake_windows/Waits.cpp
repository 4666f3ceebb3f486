#include "KernelObject.h"
#include "PatchableFunction.h"

#include <algorithm>
#include <array>

namespace fake_windows {
namespace {

using Clock = std::chrono::steady_clock;

/// Adds a waiter to the lists of its objects and removes it again.
class Enlistment {
public:
    explicit Enlistment(const ObjectReference* objects) noexcept
        : objects_(objects)
    {
        for (WaiterLink& link : links_) {
            link.waiter = &waiter_;
        }
    }
    Enlistment(const Enlistment&) = delete;
    Enlistment& operator=(const Enlistment&) = delete;
    ~Enlistment()
    {
        for (DWORD index = 0; index < enlisted_; ++index) {
            objects_[index]->Remove(links_[index]);
        }
    }

    /// @return the index of the first signalled object; count if none is signalled
    [[nodiscard]] DWORD TakeOrEnlist(DWORD count) noexcept
    {
        for (DWORD index = 0; index < count; ++index) {
            if (objects_[index]->TakeOrEnlist(index < enlisted_ ? nullptr : &links_[index])) {
                return index;
            }
            enlisted_ = std::max(enlisted_, index + 1);
        }
        return count;
    }

    [[nodiscard]] bool Wait(const Clock::time_point* deadline) { return waiter_.Wait(deadline); }

private:
    const ObjectReference* objects_;
    Waiter waiter_;
    std::array<WaiterLink, MAXIMUM_WAIT_OBJECTS> links_;
    DWORD enlisted_ = 0;
};

} // namespace

DWORD WaitForAny(const ObjectReference* objects, DWORD count, DWORD timeoutMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    Enlistment enlistment(objects);
    for (bool inTime = timeoutMs != 0;;) {
        const DWORD index = enlistment.TakeOrEnlist(count);
        if (index < count) {
            return WAIT_OBJECT_0 + index;
        }
        if (!inTime) {
            return WAIT_TIMEOUT;
        }
        inTime = enlistment.Wait(timeoutMs == INFINITE ? nullptr : &deadline);
    }
}

} // namespace fake_windows

using namespace fake_windows;

DM_FAKE(DWORD, WaitForMultipleObjects,
        (DWORD count, const HANDLE* handles, BOOL all, DWORD timeoutMs),
        (count, handles, all, timeoutMs))
{
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    if (all != FALSE && count > 1) {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return WAIT_FAILED;
    }
    std::array<ObjectReference, MAXIMUM_WAIT_OBJECTS> objects;
    for (DWORD index = 0; index < count; ++index) {
        objects[index] = FromHandle(handles[index]);
        if (!objects[index]) {
            return WAIT_FAILED;
        }
    }
    return WaitForAny(objects.data(), count, timeoutMs);
}

DM_FAKE(DWORD, WaitForSingleObject, (HANDLE handle, DWORD timeoutMs), (handle, timeoutMs))
{
    const ObjectReference object = FromHandle(handle);
    return object ? WaitForAny(&object, 1, timeoutMs) : WAIT_FAILED;
}

DM_FAKE(DWORD, SignalObjectAndWait,
        (HANDLE toSignal, HANDLE toWaitFor, DWORD timeoutMs, BOOL alertable),
        (toSignal, toWaitFor, timeoutMs, alertable))
{
    static_cast<void>(alertable);
    const ObjectReference signalled = FromHandle(toSignal);
    if (!signalled) {
        return WAIT_FAILED;
    }
    const ObjectReference awaited = FromHandle(toWaitFor);
    if (!awaited) {
        return WAIT_FAILED;
    }
    if (!signalled->Signal()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return WaitForAny(&awaited, 1, timeoutMs);
}
