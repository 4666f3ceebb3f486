#pragma once

#include <cstddef>

namespace vqrx::test {

/// Lets one allocation of the calling thread fail: the one after `succeeding` further ones that
/// succeed. Ends with its scope. Whoever uses it gets this project's operator new and delete.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t succeeding) noexcept;
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
    ~AllocationFault();

    /// Whether the allocation that was to fail was asked for.
    bool Happened() const noexcept;
};

/// How many allocations of all threads live at this moment.
std::ptrdiff_t LiveAllocations() noexcept;

} // namespace vqrx::test
