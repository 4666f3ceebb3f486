#include "log_perf/ring/BlockPool.h"

#include <algorithm>
#include <new>

namespace vqrx::log::log_perf::v2 {

BlockPool::~BlockPool()
{
    while (chunks_ != nullptr) {
        Chunk* const chunk = chunks_;
        chunks_ = chunk->next;
        upstream_->deallocate(chunk, chunk->bytes, kStep);
    }
}

void* BlockPool::do_allocate(std::size_t bytes, std::size_t alignment)
{
    if (bytes > kLargestBlock || alignment > kStep) {
        return upstream_->allocate(bytes, alignment);
    }
    const std::size_t index = (std::max<std::size_t>(bytes, 1) - 1) / kStep;
    Block*& unused = unused_.at(index);
    if (unused == nullptr) {
        AddChunk(unused, (index + 1) * kStep);
    }
    Block* const block = unused;
    unused = block->next;
    return block;
}

void BlockPool::do_deallocate(void* memory, std::size_t bytes, std::size_t alignment)
{
    if (bytes > kLargestBlock || alignment > kStep) {
        upstream_->deallocate(memory, bytes, alignment);
        return;
    }
    Block*& unused = unused_.at((std::max<std::size_t>(bytes, 1) - 1) / kStep);
    unused = new (memory) Block{unused};
}

bool BlockPool::do_is_equal(const memory_resource& other) const noexcept
{
    return this == &other;
}

// The chunk is in the list before anything else can fail: one allocation is all that it needs.
void BlockPool::AddChunk(Block*& unused, std::size_t blockBytes)
{
    static_assert(sizeof(Chunk) <= kStep && sizeof(Block) <= kStep);
    const std::size_t bytes = kStep + kBlocksOfChunk * blockBytes;
    auto* const memory = static_cast<std::byte*>(upstream_->allocate(bytes, kStep));
    chunks_ = new (memory) Chunk{chunks_, bytes};
    for (std::size_t number = kBlocksOfChunk; number != 0; --number) {
        unused = new (memory + kStep + (number - 1) * blockBytes) Block{unused};
    }
}

} // namespace vqrx::log::log_perf::v2
