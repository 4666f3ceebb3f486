#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace fake_windows {

/// One waiting thread. An object that is signalled wakes the thread. The thread then checks all of
/// its objects again.
class Waiter {
public:
    void Wake() noexcept;
    /// Waits until Wake is called or until the deadline.
    /// @param deadline  null waits without a limit
    /// @return false at the deadline
    [[nodiscard]] bool Wait(const std::chrono::steady_clock::time_point* deadline);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool woken_ = false;
};

/// Entry for one waiter in the list of a kernel object. Lives on the stack of the waiting thread.
struct WaiterLink {
    Waiter* waiter = nullptr;
    WaiterLink* previous = nullptr;
    WaiterLink* next = nullptr;
};

/// Base of the fake's events, semaphores and threads. Each handle and each user holds one
/// reference. Each object has its own lock, and no lock is common to all objects. So the use of one
/// object does not order the use of another, and ThreadSanitizer still sees the races of the
/// program under test. Memory comes from malloc, because tests make operator new fail.
class KernelObject {
public:
    KernelObject() = default;
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    static void* operator new(std::size_t size) noexcept { return std::malloc(size); }
    static void operator delete(void* memory) noexcept { std::free(memory); }

    void AddReference() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept
    {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    /// If the object is signalled, consumes the signal. Otherwise adds link to the waiters.
    /// @param link  null adds nothing
    /// @return true if the object was signalled
    [[nodiscard]] bool TakeOrEnlist(WaiterLink* link) noexcept;
    /// Removes link from the waiters.
    void Remove(WaiterLink& link) noexcept;

    /// Signals the object, as SignalObjectAndWait does.
    /// @return false if an object of this kind cannot be signalled
    [[nodiscard]] virtual bool Signal() noexcept { return false; }

protected:
    virtual ~KernelObject() = default;

    // The caller of these functions holds mutex_.
    virtual bool IsSignalled() const noexcept = 0;
    virtual void Take() noexcept {}
    void WakeAll() noexcept;

    std::mutex mutex_;

private:
    std::atomic<int> references_{1};
    WaiterLink* waiters_ = nullptr; // guarded by mutex_
};

/// Owns one reference to an object.
class ObjectReference {
public:
    ObjectReference() = default;
    /// Takes over one reference.
    explicit ObjectReference(KernelObject* object) noexcept
        : object_(object)
    {
    }
    ObjectReference(ObjectReference&& other) noexcept
        : object_(other.object_)
    {
        other.object_ = nullptr;
    }
    ObjectReference& operator=(ObjectReference&& other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ObjectReference()
    {
        if (object_ != nullptr) {
            object_->Release();
        }
    }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    KernelObject* operator->() const noexcept { return object_; }
    KernelObject* Get() const noexcept { return object_; }

private:
    KernelObject* object_ = nullptr;
};

/// Returns a new handle, which takes over one reference of the object. Returns null and sets the
/// last error if object is null or the table is full. No handle value is used a second time, so the
/// use of a closed handle always fails.
[[nodiscard]] HANDLE OpenHandle(KernelObject* object) noexcept;

/// Returns the object of a handle. Returns an empty reference and sets the last error if the handle
/// is not open.
[[nodiscard]] ObjectReference FromHandle(HANDLE handle) noexcept;

/// Returns the object if it is of this kind. Returns null and sets the last error if it is not.
template <typename Object>
[[nodiscard]] Object* As(const ObjectReference& reference) noexcept
{
    auto* const object = dynamic_cast<Object*>(reference.Get());
    if (reference && object == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return object;
}

/// Waits until one of the objects is signalled and consumes its signal.
/// @param timeoutMs  milliseconds; INFINITE waits without a limit
/// @return WAIT_OBJECT_0 plus the index of the object, or WAIT_TIMEOUT
[[nodiscard]] DWORD WaitForAny(const ObjectReference* objects, DWORD count, DWORD timeoutMs);

} // namespace fake_windows
