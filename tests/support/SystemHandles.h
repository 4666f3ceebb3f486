#pragma once

#include <windows.h>

#include <vector>

namespace vqrx::test {

/// One open handle of any process.
struct SystemHandle {
    DWORD ownerId = 0;      ///< id of the process that has the handle open
    HANDLE value = nullptr; ///< valid only in the owner
    USHORT type = 0;        ///< number of the object's type; all processes use the same numbers
};

/// Returns the open handles of all processes, from the system's table of handles. Wine's counter of
/// the handles of one process always reads 0.
/// @throws std::runtime_error if the system refuses to list its handles
[[nodiscard]] std::vector<SystemHandle> AllSystemHandles();

} // namespace vqrx::test
