#pragma once

#include <windows.h>

#include <cstddef>

namespace vqrx::test {

/// How many handles of one process another one has open: taken from the system's table of all
/// handles, since the host's counter of a process's handles reads 0.
/// @throws std::runtime_error when the system does not tell, or the holder may not be looked into
std::size_t HandlesHeld(DWORD holderId, DWORD processId);

} // namespace vqrx::test
