#include "SystemHandles.h"

#include <winternl.h>

#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

// SystemExtendedHandleInformation. winternl.h declares neither this number nor the table's layout.
constexpr ULONG kAllHandles = 64;
constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);
using QueryFunction = NTSTATUS(NTAPI*)(ULONG what, void* buffer, ULONG size, ULONG* needed);

struct TableEntry {
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
    TableEntry entries[1];
};

QueryFunction SystemQuery()
{
    // The cast through void* avoids a warning: the two function types are not related.
    void* const address = reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
    return reinterpret_cast<QueryFunction>(address);
}

} // namespace

std::vector<SystemHandle> AllSystemHandles()
{
    static const QueryFunction query = SystemQuery();
    std::vector<ULONG_PTR> buffer(32768);
    ULONG needed = 0;
    NTSTATUS status = kLengthMismatch;
    while (status == kLengthMismatch) {
        buffer.resize(buffer.size() * 2);
        status = query(kAllHandles, buffer.data(),
                       static_cast<ULONG>(buffer.size() * sizeof buffer[0]), &needed);
    }
    if (status < 0) {
        throw std::runtime_error("the system does not list its handles: " + std::to_string(status));
    }
    const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
    std::vector<SystemHandle> handles;
    handles.reserve(table->count);
    for (ULONG_PTR index = 0; index < table->count; ++index) {
        const TableEntry& entry = table->entries[index];
        handles.push_back(
            {static_cast<DWORD>(entry.ownerId), reinterpret_cast<HANDLE>(entry.value), entry.type});
    }
    return handles;
}

} // namespace vqrx::test
