#pragma once

#include <memory>

namespace vqrx::system::sync_ptr::v1 {

/// One hold on a lock; destroying it releases the hold. Released on the thread that made it.
class ILock {
public:
    ILock() = default;
    ILock(const ILock&) = delete;
    ILock& operator=(const ILock&) = delete;

    /// A further hold on the same lock. On the owning thread it never blocks.
    virtual std::unique_ptr<ILock> Clone() = 0;

    virtual ~ILock() = default;
};

} // namespace vqrx::system::sync_ptr::v1
