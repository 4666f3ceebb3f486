#include "end_process/ProcessWindows.h"

#include <functional>
#include <new>

namespace vqrx::system::end_process::v1 {
namespace {

using WindowSeen = std::function<void(HWND window, DWORD threadId)>;

struct Search {
    DWORD processId = 0;
    const WindowSeen& seen;
    bool outOfMemory = false;
};

// Returns TRUE, so that EnumWindows goes on to the next window.
BOOL CALLBACK VisitWindow(HWND window, LPARAM parameter) noexcept
{
    auto& search = *reinterpret_cast<Search*>(parameter); // NOLINT: from EnumWindows
    DWORD processId = 0;
    const DWORD threadId = GetWindowThreadProcessId(window, &processId);
    if (threadId != 0 && processId == search.processId) {
        try {
            search.seen(window, threadId);
        } catch (...) { // an exception must not pass through EnumWindows
            search.outOfMemory = true;
        }
    }
    return TRUE;
}

void ForEachWindow(DWORD processId, const WindowSeen& seen)
{
    Search search{processId, seen};
    EnumWindows(VisitWindow, reinterpret_cast<LPARAM>(&search));
    // A list without some of the windows would be wrong: no window at all means "has closed".
    if (search.outOfMemory) {
        throw std::bad_alloc();
    }
}

} // namespace

std::vector<HWND> WindowsOfProcess(DWORD processId)
{
    std::vector<HWND> windows;
    ForEachWindow(processId, [&](HWND window, DWORD) { windows.push_back(window); });
    return windows;
}

std::vector<DWORD> WindowThreadsOfProcess(DWORD processId)
{
    std::vector<DWORD> threads;
    ForEachWindow(processId, [&](HWND, DWORD threadId) { threads.push_back(threadId); });
    return threads;
}

} // namespace vqrx::system::end_process::v1
