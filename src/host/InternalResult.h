#pragma once

namespace vqrx::host::v0 {

// The results of operations inside the program that answer with an int, not with an exception.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;

} // namespace vqrx::host::v0
