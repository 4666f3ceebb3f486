#pragma once

#include "sync_ptr/SyncPtr.h"

namespace vqrx::system::sync_ptr::v1 {

/// A hold of the lock of a sync_ptr that also keeps the guarded value alive.
template <typename T>
class ValueLock : public ILock {
public:
    ValueLock(std::unique_ptr<ILock> inner, T value) noexcept
        : inner_(std::move(inner))
        , value_(std::move(value))
    {
    }

    [[nodiscard]] std::unique_ptr<ILock> Clone() override
    {
        return std::make_unique<ValueLock>(inner_->Clone(), value_);
    }

private:
    std::unique_ptr<ILock> inner_;
    T value_;
};

/// Makes a second hold of source's lock. The new hold stays valid after source is destroyed.
/// Destroy the hold on the thread that made it. @throws std::bad_alloc
template <typename T>
[[nodiscard]] std::unique_ptr<ILock> CreateLock(const sync_ptr<T>& source)
{
    return std::make_unique<ValueLock<T>>(source.lock_->Clone(), source.value_);
}

} // namespace vqrx::system::sync_ptr::v1
