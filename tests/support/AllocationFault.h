#pragma once

#include <cstddef>

namespace vqrx::test {

/// Makes one allocation of the calling thread fail with std::bad_alloc. The first `succeeding`
/// allocations after the constructor succeed, and the next one fails. The destructor disarms the
/// fault. One object at a time on a thread; Happened answers on the thread of the constructor. A
/// program that uses this class links the counting operator new and delete of AllocationFault.cpp.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t succeeding) noexcept;
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
    ~AllocationFault();

    /// Reports whether the allocation failed, that is whether the program came so far.
    [[nodiscard]] bool Happened() const noexcept;
};

/// Returns the number of blocks that all threads allocated and did not free yet.
[[nodiscard]] std::ptrdiff_t LiveAllocations() noexcept;

} // namespace vqrx::test
