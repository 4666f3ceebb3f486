#include "HeldProcesses.h"

#include "SystemHandles.h"
#include "win32/UniqueHandle.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

std::vector<HANDLE> HandlesOf(DWORD ownerId)
{
    std::vector<HANDLE> handles;
    for (const SystemHandle& handle : AllSystemHandles()) {
        if (handle.ownerId == ownerId) {
            handles.push_back(handle.value);
        }
    }
    return handles;
}

} // namespace

std::size_t HandlesHeld(DWORD holderId, DWORD processId)
{
    const UniqueKernelHandle holder(OpenProcess(PROCESS_DUP_HANDLE, FALSE, holderId));
    const std::vector<HANDLE> handles = HandlesOf(holderId);
    if (!holder || handles.empty()) {
        throw std::runtime_error("cannot read the handles of process " + std::to_string(holderId));
    }
    std::size_t count = 0;
    for (const HANDLE handle : handles) {
        HANDLE copy = nullptr;
        if (DuplicateHandle(holder.Get(), handle, GetCurrentProcess(), &copy, 0, FALSE,
                            DUPLICATE_SAME_ACCESS) != FALSE) {
            const UniqueKernelHandle owner(copy);
            // GetProcessId returns 0 for a handle that is not a process.
            count += GetProcessId(copy) == processId ? 1U : 0U;
        }
    }
    return count;
}

} // namespace vqrx::test
