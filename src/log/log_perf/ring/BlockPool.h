#pragma once

#include <array>
#include <cstddef>
#include <memory_resource>

namespace vqrx::log::log_perf::v2 {

/// Memory for very many small objects, in chunks of equal blocks. A block that was given back
/// serves the next object of about its size; the chunks go back only when the pool is destroyed.
/// The caller sees to it that only one thread at a time uses the pool.
///
/// std::pmr::unsynchronized_pool_resource would do, but libstdc++ 12 uses a chunk that it does not
/// have after its list of chunks could not grow (LogHistoryTest: "...without memory...").
class BlockPool : public std::pmr::memory_resource {
public:
    /// Bytes. A larger object gets memory of its own.
    static constexpr std::size_t kLargestBlock = 192;
    static constexpr std::size_t kBlocksOfChunk = 256;

    /// Takes its memory from the default resource of that moment.
    BlockPool() noexcept = default;
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;
    ~BlockPool() override;

private:
    static constexpr std::size_t kStep = 16; // from one size of blocks to the next; their alignment

    struct Block {
        Block* next;
    };
    struct Chunk {
        Chunk* next;
        std::size_t bytes;
    };

    void* do_allocate(std::size_t bytes, std::size_t alignment) override;
    void do_deallocate(void* memory, std::size_t bytes, std::size_t alignment) override;
    [[nodiscard]] bool do_is_equal(const memory_resource& other) const noexcept override;

    void AddChunk(Block*& unused, std::size_t blockBytes);

    std::pmr::memory_resource* upstream_ = std::pmr::get_default_resource();
    std::array<Block*, kLargestBlock / kStep> unused_{}; // lists of free blocks, by size
    Chunk* chunks_ = nullptr;
};

} // namespace vqrx::log::log_perf::v2
