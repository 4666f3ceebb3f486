#include "HeapBytes.h"

#include <array>

#include <windows.h>

namespace vqrx::bench {

std::size_t HeapBytes()
{
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t total = 0;
    for (DWORD index = 0; index < count && index < heaps.size(); ++index) {
        HeapLock(heaps[index]);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[index], &entry) != FALSE) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                total += entry.cbData + entry.cbOverhead;
            }
        }
        HeapUnlock(heaps[index]);
    }
    return total;
}

} // namespace vqrx::bench
