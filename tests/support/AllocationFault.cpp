#include "AllocationFault.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace vqrx::test {
namespace {

thread_local bool armed = false;
thread_local bool happened = false;
thread_local std::size_t remaining = 0;
std::atomic<std::ptrdiff_t> live = 0;

} // namespace

AllocationFault::AllocationFault(std::size_t succeeding) noexcept
{
    happened = false;
    remaining = succeeding;
    armed = true;
}

AllocationFault::~AllocationFault()
{
    armed = false;
}

bool AllocationFault::Happened() const noexcept
{
    return happened;
}

std::ptrdiff_t LiveAllocations() noexcept
{
    return live;
}

static void Free(void* memory) noexcept
{
    if (memory != nullptr) {
        --live;
        std::free(memory);
    }
}

static void* Allocate(std::size_t size)
{
    if (armed) {
        if (remaining == 0) {
            armed = false;
            happened = true;
            throw std::bad_alloc();
        }
        --remaining;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++live;
    return memory;
}

} // namespace vqrx::test

void* operator new(std::size_t size)
{
    return vqrx::test::Allocate(size);
}

void* operator new[](std::size_t size)
{
    return vqrx::test::Allocate(size);
}

void operator delete(void* memory) noexcept
{
    vqrx::test::Free(memory);
}

void operator delete[](void* memory) noexcept
{
    vqrx::test::Free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    vqrx::test::Free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    vqrx::test::Free(memory);
}
