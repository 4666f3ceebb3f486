#pragma once

#include "sync_ptr/ILock.h"

#include <windows.h>

namespace vqrx::system::sync_ptr::v1 {

/// A hold of a critical section. Enters the section once and leaves it once.
class LockImpl : public ILock {
public:
    /// Enters the section and returns the hold. The section must outlive the hold.
    /// @throws std::bad_alloc  before the section is entered
    [[nodiscard]] static std::unique_ptr<LockImpl> Make(CRITICAL_SECTION* section);

    LockImpl(const LockImpl&) = delete;
    LockImpl& operator=(const LockImpl&) = delete;
    [[nodiscard]] std::unique_ptr<ILock> Clone() override;
    ~LockImpl() override;

private:
    explicit LockImpl(CRITICAL_SECTION* section) noexcept;

    CRITICAL_SECTION* owner_;   // the section that Clone enters
    CRITICAL_SECTION* section_; // the section that this hold has entered; equal to owner_
    bool locked_ = false;
};

} // namespace vqrx::system::sync_ptr::v1
