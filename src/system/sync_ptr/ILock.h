#pragma once

#include <memory>

namespace vqrx::system::sync_ptr::v1 {

/// One hold of a lock. Destroying the object releases the hold. Destroy the hold on the thread that
/// made it.
class ILock {
public:
    ILock() = default;
    ILock(const ILock&) = delete;
    ILock& operator=(const ILock&) = delete;

    /// Makes a further hold of this lock. Call it on the thread that has this hold; there it never
    /// blocks. @throws std::bad_alloc
    [[nodiscard]] virtual std::unique_ptr<ILock> Clone() = 0;

    virtual ~ILock() = default;
};

} // namespace vqrx::system::sync_ptr::v1
