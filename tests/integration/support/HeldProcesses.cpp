#include "HeldProcesses.h"

#include "win32/UniqueHandle.h"

#include <winternl.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

// SystemExtendedHandleInformation; winternl.h names neither it nor its records, and its enumeration
// has no room for the number.
constexpr ULONG kAllHandles = 64;
using QueryFunction = NTSTATUS(NTAPI*)(ULONG what, void* buffer, ULONG size, ULONG* needed);

QueryFunction SystemQuery()
{
    // By way of void*, since the two function types have nothing to do with each other.
    void* const address = reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
    return reinterpret_cast<QueryFunction>(address);
}

constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

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

std::vector<HANDLE> HandlesOf(DWORD ownerId)
{
    std::vector<ULONG_PTR> buffer(8192);
    ULONG needed = 0;
    NTSTATUS status = kLengthMismatch;
    while (status == kLengthMismatch) {
        buffer.resize(buffer.size() * 2);
        status = SystemQuery()(kAllHandles, buffer.data(),
                               static_cast<ULONG>(buffer.size() * sizeof buffer[0]), &needed);
    }
    if (status < 0) {
        throw std::runtime_error("the system does not list its handles: " + std::to_string(status));
    }
    const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
    std::vector<HANDLE> handles;
    for (ULONG_PTR index = 0; index < table->count; ++index) {
        if (table->entries[index].ownerId == ownerId) {
            handles.push_back(reinterpret_cast<HANDLE>(table->entries[index].value));
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
        throw std::runtime_error("cannot look into process " + std::to_string(holderId));
    }
    std::size_t count = 0;
    for (const HANDLE handle : handles) {
        HANDLE copy = nullptr;
        if (DuplicateHandle(holder.Get(), handle, GetCurrentProcess(), &copy, 0, FALSE,
                            DUPLICATE_SAME_ACCESS) != FALSE) {
            const UniqueKernelHandle owner(copy);
            count += GetProcessId(copy) == processId ? 1U : 0U; // 0 for anything but a process
        }
    }
    return count;
}

} // namespace vqrx::test
