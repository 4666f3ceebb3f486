#include "log_perf/ring/BlockPool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::BlockPool;

TEST(BlockPool, Objects_do_not_overlap_and_are_aligned_to_16_bytes)
{
    BlockPool pool;
    struct Object {
        unsigned char* memory;
        std::size_t bytes;
    };
    std::vector<Object> objects;
    for (std::size_t number = 0; number < 3 * BlockPool::kBlocksOfChunk; ++number) {
        const std::size_t bytes = number % (BlockPool::kLargestBlock + 20) + 1;
        auto* const memory = static_cast<unsigned char*>(pool.allocate(bytes, 16));
        EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(memory) % 16);
        std::memset(memory, static_cast<int>(number % 251), bytes);
        objects.push_back({memory, bytes});
    }
    for (std::size_t number = 0; number < objects.size(); ++number) {
        const auto& [memory, bytes] = objects[number];
        for (std::size_t index = 0; index < bytes; ++index) {
            ASSERT_EQ(number % 251, memory[index]) << number;
        }
        pool.deallocate(memory, bytes, 16);
    }
}

TEST(BlockPool, Memory_that_was_given_back_serves_objects_of_about_the_same_size)
{
    BlockPool pool;
    std::set<void*> before;
    for (std::size_t number = 0; number < BlockPool::kBlocksOfChunk; ++number) {
        before.insert(pool.allocate(97, 8));
    }
    for (void* const memory : before) {
        pool.deallocate(memory, 97, 8);
    }
    for (std::size_t number = 0; number < BlockPool::kBlocksOfChunk; ++number) {
        EXPECT_TRUE(before.contains(pool.allocate(112, 16)));
    }
}

TEST(BlockPool, Only_the_same_pool_is_equal)
{
    const BlockPool pool;
    const BlockPool other;
    EXPECT_TRUE(pool.is_equal(pool));
    EXPECT_FALSE(pool.is_equal(other));
}

} // namespace
} // namespace vqrx::test
