#pragma once

#include <cstddef>

namespace vqrx::bench {

/// Returns the bytes of all used blocks on the heaps of this process, with their overhead.
[[nodiscard]] std::size_t HeapBytes();

} // namespace vqrx::bench
