// The restarts of months, run in seconds. The manager is real. Replacements of Windows functions
// stand in for the processes: each process ends as soon as it is started.
#include "AllocationFault.h"
#include "CapturingSink.h"
#include "DaemonManager.h"
#include "ImportPatch.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "log_perf/LibLogPerf.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;
using system::daemon::daemon_mgr::v0::DaemonManager;

using CloseFunction = BOOL WINAPI(HANDLE);
CloseFunction* realClose = nullptr;
std::mutex handlesMutex;
std::set<HANDLE> processes; // the open handles
std::set<HANDLE> threads;
std::atomic<unsigned> started = 0;

BOOL WINAPI StartAtOnce(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                        LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION process)
{
    process->hProcess = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    process->hThread = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    const std::lock_guard hold(handlesMutex);
    processes.insert(process->hProcess);
    threads.insert(process->hThread);
    ++started;
    return TRUE;
}

BOOL WINAPI EndedWith3(HANDLE, LPDWORD code)
{
    *code = 3;
    return TRUE;
}

DWORD WINAPI AnyProcessId(HANDLE)
{
    return 4711;
}

BOOL WINAPI CloseAndCount(HANDLE handle)
{
    {
        const std::lock_guard hold(handlesMutex);
        processes.erase(handle);
        threads.erase(handle);
    }
    return realClose(handle);
}

std::size_t OpenProcesses()
{
    const std::lock_guard hold(handlesMutex);
    return processes.size();
}

bool WaitForStarts(unsigned count)
{
    const ULONGLONG start = GetTickCount64();
    while (started < count && GetTickCount64() - start < 240000) {
        Sleep(1);
    }
    return started >= count;
}

TEST(DaemonManagerRestartsTest, Ten_thousand_restarts_keep_one_process_handle_each_and_no_memory)
{
    constexpr unsigned kDaemons = 100;
    const ImportPatch create("CreateProcessA", StartAtOnce);
    const ImportPatch exitCode("GetExitCodeProcess", EndedWith3);
    const ImportPatch processId("GetProcessId", AnyProcessId);
    const ImportPatch close("CloseHandle", CloseAndCount, realClose);
    started = 0;
    const system::com::v1::ComApartment apartment;
    std::ptrdiff_t early = 0;
    std::ptrdiff_t late = 0;
    {
        log::log_perf::v2::LibLogPerf logger; // without a sink, which would keep memory
        const auto manager =
            ComPtr<DaemonManager>::Share(new DaemonManager(GetCurrentThreadId(), 1, &logger, {}));
        for (unsigned number = 0; number < kDaemons; ++number) {
            const system::com::v1::UniqueBstr path(L"C:\\daemon" + std::to_wstring(number));
            DWORD id = 0;
            ASSERT_EQ(S_OK, manager->Launch(path.Get(), nullptr, &id));
        }
        ASSERT_TRUE(WaitForStarts(kDaemons + 1000));
        early = LiveAllocations();
        ASSERT_TRUE(WaitForStarts(kDaemons + 10000));
        late = LiveAllocations();
    }
    // For each daemon, all handles but that of the last process stay open.
    EXPECT_EQ(started - kDaemons, OpenProcesses());
    EXPECT_TRUE(threads.empty());
    // This test allocates one entry of `processes` per restart. The logger's queue holds at most
    // 1000 records with two allocations each, the node and the text.
    EXPECT_GE(2100 + static_cast<std::ptrdiff_t>(started), late - early);
    const std::set<HANDLE> open = processes;
    for (const HANDLE handle : open) {
        CloseHandle(handle);
    }
}

} // namespace
} // namespace vqrx::test
