#pragma once

namespace vqrx::test::anomaly {

/// What a path to an allocation with operator new has in place of a function's name.
inline constexpr const char* kOperatorNew = "operator new";

/// Does nothing. Whoever calls it links operator new and delete of Allocations.cpp.
void UseCountedAllocations() noexcept;

} // namespace vqrx::test::anomaly
