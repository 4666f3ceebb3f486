#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace native_win32 {

/// One waiting thread. What it waits for wakes it; it then looks for itself what has come.
class Waiter {
public:
    void Wake() noexcept;
    /// Until woken, or until the deadline, which is for ever when null.
    /// @return false at the deadline
    bool Wait(const std::chrono::steady_clock::time_point* deadline);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool woken_ = false;
};

/// A waiter's place in the list of what it waits for; lives on the waiting thread's stack.
struct WaiterLink {
    Waiter* waiter = nullptr;
    WaiterLink* previous = nullptr;
    WaiterLink* next = nullptr;
};

/// Something to wait for, counted by its handles and users. Each has a lock of its own and no lock
/// is common to all, so that using one object orders nothing about another: a race of the program
/// under test stays visible. Takes no memory from operator new, which tests make fail.
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

    /// Takes what is signalled, or puts link (when given) into the list of those to wake.
    /// @return whether it was signalled
    bool TakeOrEnlist(WaiterLink* link) noexcept;
    void Strike(WaiterLink& link) noexcept;

    /// What SignalObjectAndWait does to it. @return false when it cannot be signalled
    virtual bool Signal() noexcept { return false; }

protected:
    virtual ~KernelObject() = default;

    /// Under the lock.
    virtual bool IsSignalled() const noexcept = 0;
    virtual void Take() noexcept {}
    void WakeAll() noexcept;

    std::mutex mutex_;

private:
    std::atomic<int> references_{1};
    WaiterLink* waiters_ = nullptr; // under the lock
};

/// A counted reference to an object.
class ObjectReference {
public:
    ObjectReference() = default;
    /// Takes over a count.
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

/// A new handle for an object, whose count it takes over; null with the last error set when there
/// are no more. Values are never used again, so that a closed handle stays recognisable.
HANDLE OpenHandle(KernelObject* object) noexcept;

/// The object behind a handle; empty with the last error set for one that is not open.
ObjectReference FromHandle(HANDLE handle) noexcept;

/// The same for one kind of object.
template <typename Object>
Object* As(const ObjectReference& reference) noexcept
{
    auto* const object = dynamic_cast<Object*>(reference.Get());
    if (reference && object == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return object;
}

/// What the signalling half of SignalObjectAndWait and the waits have in common.
DWORD WaitForAny(const ObjectReference* objects, DWORD count, DWORD timeoutMs);

} // namespace native_win32
