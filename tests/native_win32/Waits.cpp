#include "Import.h"
#include "KernelObject.h"

#include <algorithm>
#include <array>

namespace native_win32 {
namespace {

using Clock = std::chrono::steady_clock;

/// Keeps a waiter in the lists of all that it waits for.
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
            objects_[index]->Strike(links_[index]);
        }
    }

    /// @return the index of the first object that was signalled; count when there is none
    DWORD TakeOrEnlist(DWORD count) noexcept
    {
        for (DWORD index = 0; index < count; ++index) {
            if (objects_[index]->TakeOrEnlist(index < enlisted_ ? nullptr : &links_[index])) {
                return index;
            }
            enlisted_ = std::max(enlisted_, index + 1);
        }
        return count;
    }

    bool Wait(const Clock::time_point* deadline) { return waiter_.Wait(deadline); }

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

} // namespace native_win32

using namespace native_win32;

DM_IMPORT(DWORD, WaitForMultipleObjects,
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

DM_IMPORT(DWORD, WaitForSingleObject, (HANDLE handle, DWORD timeoutMs), (handle, timeoutMs))
{
    const ObjectReference object = FromHandle(handle);
    return object ? WaitForAny(&object, 1, timeoutMs) : WAIT_FAILED;
}

DM_IMPORT(DWORD, SignalObjectAndWait,
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
