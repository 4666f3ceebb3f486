#pragma once

#include "sync_ptr/ILock.h"

#include <windows.h>

namespace vqrx::system::sync_ptr::v1 {

/// A hold on a critical section: entered once when made, left once when destroyed.
class LockImpl : public ILock {
public:
    /// A hold, entered. The section must outlive it. @throws std::bad_alloc, with nothing entered
    static std::unique_ptr<LockImpl> Make(CRITICAL_SECTION* section);

    LockImpl(const LockImpl&) = delete;
    LockImpl& operator=(const LockImpl&) = delete;
    std::unique_ptr<ILock> Clone() override;
    ~LockImpl() override;

private:
    explicit LockImpl(CRITICAL_SECTION* section) noexcept;

    CRITICAL_SECTION* owner_;   // the section that the hold belongs to
    CRITICAL_SECTION* section_; // the section that is entered: the same
    bool locked_ = false;
};

} // namespace vqrx::system::sync_ptr::v1
