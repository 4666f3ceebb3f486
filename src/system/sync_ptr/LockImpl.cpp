#include "sync_ptr/LockImpl.h"

namespace vqrx::system::sync_ptr::v1 {

LockImpl::LockImpl(CRITICAL_SECTION* section) noexcept
    : owner_(section)
    , section_(section)
{
}

std::unique_ptr<LockImpl> LockImpl::Make(CRITICAL_SECTION* section)
{
    // The allocation comes before entering the section, because it may fail.
    std::unique_ptr<LockImpl> hold(new LockImpl(section));
    EnterCriticalSection(hold->section_);
    hold->locked_ = true;
    return hold;
}

std::unique_ptr<ILock> LockImpl::Clone()
{
    return Make(owner_);
}

LockImpl::~LockImpl()
{
    if (locked_) {
        LeaveCriticalSection(section_);
        locked_ = false;
    }
}

} // namespace vqrx::system::sync_ptr::v1
