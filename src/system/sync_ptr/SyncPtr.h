#pragma once

#include "sync_ptr/ILock.h"
#include "sync_ptr/LockImpl.h"

#include <memory>
#include <utility>

namespace vqrx::system::sync_ptr::v1 {

/// Locked access to a shared object: whoever has one in hand is inside the lock, and the lock is
/// left when it goes away. Reads like a pointer; the pointer itself is never handed out, so that
/// the object cannot be reached without the lock. Movable, not copyable; a further hold is made
/// with Clone(). Stays on the thread that made it, and no longer than the object is needed.
/// @tparam T  a raw or shared pointer to the guarded object
template <typename T>
class sync_ptr { // NOLINT(readability-identifier-naming): reads like std::shared_ptr
public:
    using Element = typename std::pointer_traits<T>::element_type;

    /// @param lock  a hold on the lock that guards what value points to
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

    /// On a temporary the object stays locked to the end of the full expression.
    Element* operator->() const noexcept { return std::to_address(value_); }

    /// Not on a temporary: the reference would outlive the hold.
    Element& operator*() const& noexcept { return *value_; }
    Element& operator*() const&& = delete;

    /// False for a null value and after a move.
    explicit operator bool() const noexcept { return lock_ != nullptr && value_ != nullptr; }

    /// A further hold on the same lock, with the same value.
    sync_ptr Clone() const { return sync_ptr(lock_->Clone(), value_); }

    /// The value as it stands, for a hold that carries it on; see CreateLock.
    template <typename U>
    friend std::unique_ptr<ILock> CreateLock(const sync_ptr<U>& source);

private:
    // The value goes first when destroyed, the lock last: dropping the last shared reference
    // happens inside the lock.
    std::unique_ptr<ILock> lock_;
    T value_;
};

/// Enters the section and returns access to what value points to.
/// @param section  must outlive the result and every hold cloned from it
/// @throws std::bad_alloc, with nothing entered
template <typename T>
sync_ptr<T> make_sync_ptr(T value,
                          CRITICAL_SECTION* section) // NOLINT(readability-identifier-naming)
{
    return sync_ptr<T>(LockImpl::Make(section), std::move(value));
}

} // namespace vqrx::system::sync_ptr::v1
