// Processor times and memory of the host, read from the kernel and from /proc.
#include "PatchableFunction.h"

#include <psapi.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace {

FILETIME FileTime(std::uint64_t hundredNanoseconds) noexcept
{
    return {static_cast<DWORD>(hundredNanoseconds), static_cast<DWORD>(hundredNanoseconds >> 32)};
}

std::uint64_t FromTimeval(const timeval& time) noexcept
{
    return static_cast<std::uint64_t>(time.tv_sec) * 10000000 +
           static_cast<std::uint64_t>(time.tv_usec) * 10;
}

/// Returns a value of /proc/meminfo in bytes; 0 if the file does not name it.
std::uint64_t MemoryInfo(const char* name) noexcept
{
    std::uint64_t found = 0;
    if (std::FILE* const file = std::fopen("/proc/meminfo", "r")) {
        char line[128];
        const std::size_t length = std::strlen(name);
        while (std::fgets(line, sizeof line, file) != nullptr) {
            std::uint64_t kilobytes = 0;
            if (std::strncmp(line, name, length) == 0 &&
                std::sscanf(line + length, ": %" SCNu64, &kilobytes) == 1) {
                found = kilobytes * 1024;
            }
        }
        std::fclose(file);
    }
    return found;
}

} // namespace

DM_FAKE(HANDLE, GetCurrentProcess, (), ())
{
    return INVALID_HANDLE_VALUE; // On Windows the pseudo-handle has the same value.
}

DM_FAKE(DWORD, GetCurrentProcessId, (), ())
{
    return static_cast<DWORD>(getpid());
}

DM_FAKE(BOOL, GetProcessTimes,
        (HANDLE process, FILETIME* created, FILETIME* exited, FILETIME* kernel, FILETIME* user),
        (process, created, exited, kernel, user))
{
    rusage usage{};
    if (process != INVALID_HANDLE_VALUE || getrusage(RUSAGE_SELF, &usage) != 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *created = FileTime(0);
    *exited = FileTime(0);
    *kernel = FileTime(FromTimeval(usage.ru_stime));
    *user = FileTime(FromTimeval(usage.ru_utime));
    return TRUE;
}

DM_FAKE(BOOL, GetSystemTimes, (FILETIME * idle, FILETIME* kernel, FILETIME* user),
        (idle, kernel, user))
{
    std::uint64_t ticks[7] = {}; // user, nice, system, idle, waiting, interrupts, soft interrupts
    std::FILE* const file = std::fopen("/proc/stat", "r");
    if (file == nullptr) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    const int found = std::fscanf(
        file,
        "cpu %" SCNu64 " %" SCNu64 " %" SCNu64 " %" SCNu64 " %" SCNu64 " %" SCNu64 " %" SCNu64,
        &ticks[0], &ticks[1], &ticks[2], &ticks[3], &ticks[4], &ticks[5], &ticks[6]);
    std::fclose(file);
    const auto perTick = 10000000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    const std::uint64_t idleTicks = ticks[3] + ticks[4];
    *idle = FileTime(idleTicks * perTick);
    *kernel = FileTime((idleTicks + ticks[2] + ticks[5] + ticks[6]) * perTick);
    *user = FileTime((ticks[0] + ticks[1]) * perTick);
    return found == 7 ? TRUE : FALSE;
}

DM_FAKE(BOOL, GlobalMemoryStatusEx, (MEMORYSTATUSEX * status), (status))
{
    if (status->dwLength != sizeof *status) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::uint64_t limit = MemoryInfo("CommitLimit");
    const std::uint64_t committed = MemoryInfo("Committed_AS"); // may exceed the limit
    status->ullTotalPhys = MemoryInfo("MemTotal");
    status->ullAvailPhys = MemoryInfo("MemAvailable");
    status->ullTotalPageFile = limit;
    status->ullAvailPageFile = committed < limit ? limit - committed : 0;
    return TRUE;
}

DM_FAKE(BOOL, GetProcessMemoryInfo, (HANDLE process, PROCESS_MEMORY_COUNTERS* counters, DWORD size),
        (process, counters, size))
{
    std::FILE* const file = process == INVALID_HANDLE_VALUE && size >= sizeof *counters
                                ? std::fopen("/proc/self/statm", "r")
                                : nullptr;
    if (file == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    SIZE_T resident = 0;
    SIZE_T data = 0;
    const int found = std::fscanf(file, "%*u %zu %*u %*u %*u %zu", &resident, &data);
    std::fclose(file);
    const auto page = static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
    *counters = {};
    counters->cb = sizeof *counters;
    counters->WorkingSetSize = resident * page;
    counters->PagefileUsage = data * page;
    return found == 2 ? TRUE : FALSE;
}
