#pragma once

#include "sync_ptr/ILock.h"
#include "sync_ptr/LockImpl.h"

#include <memory>
#include <utility>

namespace vqrx::system::sync_ptr::v1 {

/// A pointer to a shared object together with a hold of the lock that guards the object. The hold
/// lasts until the sync_ptr is destroyed; the lock is free when all holds are gone. The plain
/// pointer is not accessible, so nobody reaches the object through a sync_ptr without the lock.
/// Movable; Clone() makes a second one.
/// Use and destroy it on the thread that made it, and keep it only as long as the object is needed.
/// @tparam T  a raw or shared pointer to the guarded object
template <typename T>
class sync_ptr { // NOLINT(readability-identifier-naming): reads like std::shared_ptr
public:
    using Element = typename std::pointer_traits<T>::element_type;

    /// @param lock  a hold of the lock that guards the object of value
    sync_ptr(std::unique_ptr<ILock> lock, T value) noexcept
        : lock_(std::move(lock))
        , value_(std::move(value))
    {
    }
    sync_ptr(sync_ptr&& other) noexcept
        : lock_(std::move(other.lock_))
        , value_(std::exchange(other.value_, T{}))
    {
    }
    sync_ptr& operator=(sync_ptr&& other) noexcept
    {
        sync_ptr taken(std::move(other));
        std::swap(lock_, taken.lock_);
        std::swap(value_, taken.value_);
        return *this;
    }
    sync_ptr(const sync_ptr&) = delete;
    sync_ptr& operator=(const sync_ptr&) = delete;
    ~sync_ptr() = default;

    /// For a temporary sync_ptr the object stays locked until the end of the full expression.
    Element* operator->() const noexcept { return std::to_address(value_); }

    /// Deleted for a temporary sync_ptr, because the reference would outlive the hold.
    Element& operator*() const& noexcept { return *value_; }
    Element& operator*() const&& = delete;

    /// False for a null value and after a move.
    explicit operator bool() const noexcept { return lock_ != nullptr && value_ != nullptr; }

    /// Makes a second sync_ptr to the object, with a hold of its own. @throws std::bad_alloc
    [[nodiscard]] sync_ptr Clone() const { return sync_ptr(lock_->Clone(), value_); }

    /// Makes a hold that may outlive this sync_ptr: see CreateLock.h.
    template <typename U>
    friend std::unique_ptr<ILock> CreateLock(const sync_ptr<U>& source);

private:
    // The value is destroyed before the lock: if it is the last reference to the object, the object
    // is destroyed while the lock is held.
    std::unique_ptr<ILock> lock_;
    T value_;
};

/// Enters the section and returns a sync_ptr to the object that value points to.
/// @param section  must outlive the result and every hold cloned from it
/// @throws std::bad_alloc  before the section is entered
template <typename T>
// NOLINTNEXTLINE(readability-identifier-naming): reads like std::make_shared
[[nodiscard]] sync_ptr<T> make_sync_ptr(T value, CRITICAL_SECTION* section)
{
    return sync_ptr<T>(LockImpl::Make(section), std::move(value));
}

} // namespace vqrx::system::sync_ptr::v1
