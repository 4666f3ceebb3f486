#pragma once

#include <windows.h>

namespace vqrx::system::sync_ptr::v1 {

/// A critical section that is made with spin count 0 and deleted with its owner.
class CriticalSection {
public:
    /// @throws ATL::CAtlException with the system's error when it cannot be made
    CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    ~CriticalSection();

    /// For make_sync_ptr and the hold below; nobody else enters it by hand.
    CRITICAL_SECTION* Get() noexcept { return &section_; }

private:
    CRITICAL_SECTION section_;
};

/// Enters a critical section for as long as it lives, on the thread that made it.
class CriticalSectionHold {
public:
    explicit CriticalSectionHold(CriticalSection& section) noexcept
        : section_(section.Get())
    {
        EnterCriticalSection(section_);
    }
    CriticalSectionHold(const CriticalSectionHold&) = delete;
    CriticalSectionHold& operator=(const CriticalSectionHold&) = delete;
    ~CriticalSectionHold() { LeaveCriticalSection(section_); }

private:
    CRITICAL_SECTION* section_;
};

} // namespace vqrx::system::sync_ptr::v1
