#include "ProcessWindows.h"

#include <functional>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using WindowSeen = std::function<void(HWND window, DWORD threadId)>;

struct Search {
    DWORD processId;
    const WindowSeen& seen;
};

// Always TRUE: the enumeration runs over all windows.
BOOL CALLBACK VisitWindow(HWND window, LPARAM parameter) noexcept
{
    const auto& search = *reinterpret_cast<const Search*>(parameter); // NOLINT: from EnumWindows
    DWORD processId = 0;
    const DWORD threadId = GetWindowThreadProcessId(window, &processId);
    if (threadId != 0 && processId == search.processId) {
        try {
            search.seen(window, threadId);
        } catch (...) { // NOLINT(bugprone-empty-catch): out of memory: one window fewer is asked
        }
    }
    return TRUE;
}

void ForEachWindow(DWORD processId, const WindowSeen& seen)
{
    const Search search{processId, seen};
    EnumWindows(VisitWindow, reinterpret_cast<LPARAM>(&search));
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

} // namespace vqrx::system::daemon::daemon_mgr::v0
