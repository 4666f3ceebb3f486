// operator new and delete of the test programs: the allocations of the product are counted, can
// fail, and are in the ledger.
#include "Allocations.h"

#include "Injection.h"
#include "Ledger.h"

#include <cstdlib>
#include <new>

namespace vqrx::test::anomaly {
namespace {

void* AllocateCounted(std::size_t size, const void* caller)
{
    bool fails = false;
    const CallPath* const path = CountAllocation(caller, fails);
    if (fails) {
        throw std::bad_alloc();
    }
    const std::size_t bytes = size == 0 ? 1 : size;
    void* memory = nullptr;
    if (path == nullptr) {
        memory = std::malloc(bytes);
    } else {
        const OfTheTest mark; // malloc itself is not counted a second time
        memory = std::malloc(bytes);
        NoteAcquired(Resource::kMemory, reinterpret_cast<std::uint64_t>(memory), path);
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void UseCountedAllocations() noexcept {}

} // namespace vqrx::test::anomaly

void* operator new(std::size_t size)
{
    return vqrx::test::anomaly::AllocateCounted(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size)
{
    return vqrx::test::anomaly::AllocateCounted(size, __builtin_return_address(0));
}

// The thunk of free takes the block out of the ledger.

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
