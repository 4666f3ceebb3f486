#pragma once

#include <windows.h>

namespace vqrx::system::sync_ptr::v1 {

/// Owns a critical section with spin count 0.
class CriticalSection {
public:
    /// @throws ATL::CAtlException  with the error of the system as a result code
    CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    ~CriticalSection();

    /// For make_sync_ptr and CriticalSectionHold; other code does not enter the section itself.
    [[nodiscard]] CRITICAL_SECTION* Get() noexcept { return &section_; }

private:
    CRITICAL_SECTION section_;
};

/// A hold of a critical section: enters the section, and leaves it when destroyed. Create and
/// destroy it on the same thread. The section must outlive it.
class [[nodiscard]] CriticalSectionHold {
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
