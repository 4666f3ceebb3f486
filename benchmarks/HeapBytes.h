#pragma once

#include <cstddef>

namespace vqrx::bench {

/// Bytes of all blocks in use on this process's heaps, their overhead included.
std::size_t HeapBytes();

} // namespace vqrx::bench
