#include "win32/LocalMemory.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::win32::v1::UniqueLocalMemory;

TEST(LocalMemory, Memory_is_freed_at_the_end_of_its_owner)
{
    // LocalFlags reports a freed movable block as an invalid handle.
    const HLOCAL block = LocalAlloc(LMEM_MOVEABLE, 16);
    ASSERT_NE(LMEM_INVALID_HANDLE, LocalFlags(block));
    {
        const UniqueLocalMemory<void> owner(block);
        EXPECT_NE(LMEM_INVALID_HANDLE, LocalFlags(block));
    }
    EXPECT_EQ(LMEM_INVALID_HANDLE, LocalFlags(block));
}

TEST(LocalMemory, An_owner_without_memory_is_false)
{
    EXPECT_FALSE(UniqueLocalMemory<wchar_t*>());
}

} // namespace vqrx::test
