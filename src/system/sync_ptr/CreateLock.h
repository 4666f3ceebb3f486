#pragma once

#include "sync_ptr/SyncPtr.h"

namespace vqrx::system::sync_ptr::v1 {

/// A hold taken from a sync_ptr, with the value that it guards beside it.
template <typename T>
class ValueLock : public ILock {
public:
    ValueLock(std::unique_ptr<ILock> inner, T value) noexcept
        : inner_(std::move(inner))
        , value_(std::move(value))
    {
    }

    std::unique_ptr<ILock> Clone() override
    {
        return std::make_unique<ValueLock>(inner_->Clone(), value_);
    }

private:
    std::unique_ptr<ILock> inner_;
    T value_;
};

/// A hold that stays valid after source is gone.
template <typename T>
std::unique_ptr<ILock> CreateLock(const sync_ptr<T>& source)
{
    return std::make_unique<ValueLock<T>>(source.lock_->Clone(), source.value_);
}

} // namespace vqrx::system::sync_ptr::v1
