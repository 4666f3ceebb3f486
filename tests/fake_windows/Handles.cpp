#include "KernelObject.h"
#include "PatchableFunction.h"

#include <array>
#include <shared_mutex>

namespace fake_windows {
namespace {

struct Entry {
    KernelObject* object = nullptr;
    std::uintptr_t value = 0; // last handle value of this entry; still set while the entry is free
};

constexpr std::size_t kMaxHandles = 4096;

// FromHandle holds this lock shared, so lookups in two threads do not order these threads.
std::shared_mutex tableMutex;
std::array<Entry, kMaxHandles> table;
DWORD openHandles = 0;

// Handle values are multiples of 4, as on Windows, and never null.
std::uintptr_t NextValue(std::size_t index, std::uintptr_t previous)
{
    return previous == 0 ? (index + 1) * 4 : previous + kMaxHandles * 4;
}

Entry* Find(HANDLE handle) noexcept
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    if (value == 0 || value % 4 != 0) {
        return nullptr;
    }
    Entry& entry = table[(value / 4 - 1) % kMaxHandles];
    return entry.object != nullptr && entry.value == value ? &entry : nullptr;
}

} // namespace

HANDLE OpenHandle(KernelObject* object) noexcept
{
    const std::unique_lock lock(tableMutex);
    for (std::size_t index = 0; object != nullptr && index < table.size(); ++index) {
        Entry& entry = table[index];
        if (entry.object == nullptr) {
            entry.object = object;
            entry.value = NextValue(index, entry.value);
            ++openHandles;
            return reinterpret_cast<HANDLE>(entry.value);
        }
    }
    if (object != nullptr) {
        object->Release();
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

ObjectReference FromHandle(HANDLE handle) noexcept
{
    const std::shared_lock lock(tableMutex);
    if (const Entry* const entry = Find(handle)) {
        entry->object->AddReference();
        return ObjectReference(entry->object);
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return {};
}

} // namespace fake_windows

using namespace fake_windows;

DM_FAKE(BOOL, CloseHandle, (HANDLE handle), (handle))
{
    ObjectReference closed; // released after the lock
    const std::unique_lock lock(tableMutex);
    Entry* const entry = Find(handle);
    if (entry == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    closed = ObjectReference(entry->object);
    entry->object = nullptr;
    --openHandles;
    return TRUE;
}

DM_FAKE(BOOL, GetHandleInformation, (HANDLE handle, DWORD* flags), (handle, flags))
{
    *flags = 0;
    return FromHandle(handle) ? TRUE : FALSE;
}

DM_FAKE(BOOL, GetProcessHandleCount, (HANDLE process, DWORD* count), (process, count))
{
    static_cast<void>(process);
    const std::shared_lock lock(tableMutex);
    *count = openHandles;
    return TRUE;
}

DM_FAKE(BOOL, FindClose, (HANDLE search), (search))
{
    static_cast<void>(search);
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

DM_FAKE(LONG, RegCloseKey, (HKEY key), (key))
{
    static_cast<void>(key);
    return ERROR_INVALID_HANDLE;
}
