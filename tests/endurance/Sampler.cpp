#include "Sampler.h"

#include <winternl.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <fstream>
#include <iomanip>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

// SystemExtendedHandleInformation; winternl.h names neither it nor its records.
constexpr ULONG kAllHandles = 64;
constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);
using QueryFunction = NTSTATUS(NTAPI*)(ULONG what, void* buffer, ULONG size, ULONG* needed);

struct HandleEntry {
    void* object;
    ULONG_PTR ownerId;
    ULONG_PTR value;
    ULONG access;
    USHORT backTrace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
struct HandleTable {
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};

std::vector<HandleEntry> AllHandles()
{
    // By way of void*, since the two function types have nothing to do with each other.
    static const auto query = reinterpret_cast<QueryFunction>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
    static std::vector<ULONG_PTR> buffer(65536);
    ULONG needed = 0;
    for (;;) {
        const NTSTATUS status =
            query(kAllHandles, buffer.data(), static_cast<ULONG>(buffer.size() * sizeof buffer[0]),
                  &needed);
        if (status == kLengthMismatch) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (status < 0) {
            throw std::runtime_error("the system does not list its handles");
        }
        const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
        return {table->entries, table->entries + table->count};
    }
}

double SecondsOf(const FILETIME& time)
{
    return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
}

unsigned ThreadsOf(DWORD processId)
{
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot.Get(), &entry); more != FALSE;
         more = Process32Next(snapshot.Get(), &entry)) {
        if (entry.th32ProcessID == processId) {
            return entry.cntThreads;
        }
    }
    return 0;
}

} // namespace

HandleCounts CountHandles(DWORD ownerId)
{
    const UniqueKernelHandle self(
        OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, GetCurrentProcessId()));
    const auto handles = AllHandles();
    USHORT processType = 0;
    for (const HandleEntry& entry : handles) {
        if (entry.ownerId == GetCurrentProcessId() &&
            entry.value == reinterpret_cast<ULONG_PTR>(self.Get())) {
            processType = entry.type;
        }
    }
    if (processType == 0) {
        throw std::runtime_error("the system does not tell the types of handles");
    }
    HandleCounts counts;
    for (const HandleEntry& entry : handles) {
        if (entry.ownerId == ownerId) {
            ++(entry.type == processType ? counts.process : counts.other);
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
    sample.threads = ThreadsOf(processId_);
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
