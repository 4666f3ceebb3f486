#pragma once

namespace vqrx::client::v0 {

/// Returns whether standard output is a pipe that nobody reads any more, as in "daemonctl log |
/// head" after the first lines: head has what it wants.
[[nodiscard]] bool ReaderHasGone() noexcept;

} // namespace vqrx::client::v0
