#pragma once

#include <windows.h>

#include <cstddef>

namespace vqrx::test {

/// Returns the number of handles to process processId that process holderId has open.
/// @throws std::runtime_error if the system refuses to list its handles, or if this process may not
///                            duplicate the handles of the holder
[[nodiscard]] std::size_t HandlesHeld(DWORD holderId, DWORD processId);

} // namespace vqrx::test
