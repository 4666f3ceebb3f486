#include "Sampler.h"

#include "ChildProcess.h"
#include "SystemHandles.h"

#include <psapi.h>

#include <fstream>
#include <iomanip>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

double SecondsOf(const FILETIME& time)
{
    return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
}

} // namespace

HandleCounts CountHandles(DWORD ownerId)
{
    const UniqueKernelHandle self(
        OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, GetCurrentProcessId()));
    const std::vector<SystemHandle> handles = AllSystemHandles();
    USHORT processType = 0;
    for (const SystemHandle& handle : handles) {
        if (handle.ownerId == GetCurrentProcessId() && handle.value == self.Get()) {
            processType = handle.type;
        }
    }
    if (processType == 0) {
        throw std::runtime_error("the system's table of handles has no handle of this process");
    }
    HandleCounts counts;
    for (const SystemHandle& handle : handles) {
        if (handle.ownerId == ownerId) {
            ++(handle.type == processType ? counts.process : counts.other);
        }
    }
    return counts;
}

Sampler::Sampler(DWORD processId)
    : processId_(processId)
    , process_(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId))
{
}

Sample Sampler::Take() const
{
    Sample sample;
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(process_.Get(), &memory, sizeof memory);
    sample.privateMiB = static_cast<double>(memory.PagefileUsage) / 1048576;
    sample.workingMiB = static_cast<double>(memory.WorkingSetSize) / 1048576;
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(process_.Get(), &created, &ended, &kernel, &user);
    sample.cpuSeconds = SecondsOf(kernel) + SecondsOf(user);
    sample.threads = static_cast<unsigned>(CountOfThreads(processId_));
    sample.handles = CountHandles(processId_);
    return sample;
}

void WriteCsv(const std::string& path, const std::vector<Sample>& samples)
{
    std::ofstream file(path, std::ios::binary);
    file << "seconds,private_mib,working_set_mib,process_handles,expected_process_handles,"
            "other_handles,threads,cpu_seconds,restarts,log_records\n"
         << std::fixed;
    for (const Sample& sample : samples) {
        file << std::setprecision(1) << sample.seconds << ',' << std::setprecision(2)
             << sample.privateMiB << ',' << sample.workingMiB << ',' << sample.handles.process
             << ',' << sample.expectedProcessHandles << ',' << sample.handles.other << ','
             << sample.threads << ',' << sample.cpuSeconds << ',' << sample.restarts << ','
             << sample.records << '\n';
    }
}

} // namespace vqrx::test
