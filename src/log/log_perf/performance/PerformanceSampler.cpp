#include "log_perf/performance/PerformanceSampler.h"

#include "log_perf/time/Clock.h"
#include "win32/FileTime.h"

#include <windows.h>

#include <psapi.h>

namespace vqrx::log::log_perf::v2 {

using system::win32::v1::Ticks;

SystemTimes SampleSystemTimes() noexcept
{
    FILETIME idle{};
    FILETIME kernel{};
    FILETIME user{};
    GetSystemTimes(&idle, &kernel, &user);
    return {Ticks(idle), Ticks(kernel) + Ticks(user)};
}

PerformanceSample SamplePerformance() noexcept
{
    PerformanceSample sample;
    sample.time = CurrentTimestamp();

    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
    sample.kernelTime = Ticks(kernel);
    sample.userTime = Ticks(user);

    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    sample.workingSet = memory.WorkingSetSize;
    sample.pageFileUsage = memory.PagefileUsage;

    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatusEx(&status);
    sample.totalPageFile = status.ullTotalPageFile;
    sample.availablePageFile = status.ullAvailPageFile;

    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    sample.handleCount = handles;

    sample.system = SampleSystemTimes();
    return sample;
}

} // namespace vqrx::log::log_perf::v2
