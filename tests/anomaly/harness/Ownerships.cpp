#include "CallKinds.h"

#include <algorithm>
#include <iterator>

namespace vqrx::test::anomaly {
namespace {

constexpr auto kResult = Where::kResult;
constexpr auto kParameter = Where::kParameter;
constexpr auto kThrough = Where::kThroughParameter;
constexpr auto kThread = Where::kThread;

constexpr auto kHandle = Success::kHandle;
constexpr auto kNotZero = Success::kNotZero;
constexpr auto kZero = Success::kZero;
constexpr auto kNotNegative = Success::kNotNegative;

// The lines of one function stand together. CreateProcessA and VariantClear are not here:
// Injection.cpp looks into their structures.
constexpr Ownership kOwnerships[] = {
    {"CreateEventA", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateEventW", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateFileA", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateFileW", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateJobObjectW", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateSemaphoreA", Resource::kHandle, true, kResult, 0, kHandle},
    {"CreateToolhelp32Snapshot", Resource::kHandle, true, kResult, 0, kHandle},
    {"OpenEventW", Resource::kHandle, true, kResult, 0, kHandle},
    {"OpenProcess", Resource::kHandle, true, kResult, 0, kHandle},
    {"OpenProcessToken", Resource::kHandle, true, kThrough, 3, kNotZero},
    {"_beginthreadex", Resource::kHandle, true, kResult, 0, kHandle},
    {"CloseHandle", Resource::kHandle, false, kParameter, 1},
    {"CloseHandle", Resource::kProcess, false, kParameter, 1},
    {"OpenSCManagerA", Resource::kServiceHandle, true, kResult, 0, kHandle},
    {"OpenSCManagerW", Resource::kServiceHandle, true, kResult, 0, kHandle},
    {"OpenServiceA", Resource::kServiceHandle, true, kResult, 0, kHandle},
    {"OpenServiceW", Resource::kServiceHandle, true, kResult, 0, kHandle},
    {"CloseServiceHandle", Resource::kServiceHandle, false, kParameter, 1},
    {"RegOpenKeyExA", Resource::kRegistryKey, true, kThrough, 5, kZero},
    {"RegOpenKeyExW", Resource::kRegistryKey, true, kThrough, 5, kZero},
    {"RegCloseKey", Resource::kRegistryKey, false, kParameter, 1},
    {"SysAllocString", Resource::kText, true, kResult, 0, kNotZero},
    {"SysAllocStringLen", Resource::kText, true, kResult, 0, kNotZero},
    {"SysFreeString", Resource::kText, false, kParameter, 1},
    {"InitializeCriticalSection", Resource::kCriticalSection, true, kParameter, 1},
    {"InitializeCriticalSectionAndSpinCount", Resource::kCriticalSection, true, kParameter, 1,
     kNotZero},
    {"DeleteCriticalSection", Resource::kCriticalSection, false, kParameter, 1},
    {"CommandLineToArgvW", Resource::kLocalMemory, true, kResult, 0, kNotZero},
    {"ConvertSidToStringSidW", Resource::kLocalMemory, true, kThrough, 2, kNotZero},
    {"ConvertStringSecurityDescriptorToSecurityDescriptorW", Resource::kLocalMemory, true, kThrough,
     3, kNotZero},
    {"ConvertStringSidToSidW", Resource::kLocalMemory, true, kThrough, 2, kNotZero},
    {"GetNamedSecurityInfoW", Resource::kLocalMemory, true, kThrough, 8, kZero},
    {"GetSecurityInfo", Resource::kLocalMemory, true, kThrough, 8, kZero},
    {"LocalFree", Resource::kLocalMemory, false, kParameter, 1},
    {"fopen", Resource::kFile, true, kResult, 0, kNotZero},
    {"_wfopen", Resource::kFile, true, kResult, 0, kNotZero},
    {"fclose", Resource::kFile, false, kParameter, 1},
    {"FindFirstFileA", Resource::kSearch, true, kResult, 0, kHandle},
    {"FindFirstFileExW", Resource::kSearch, true, kResult, 0, kHandle},
    {"FindClose", Resource::kSearch, false, kParameter, 1},
    {"CreateTimerQueueTimer", Resource::kTimer, true, kThrough, 1, kNotZero},
    {"DeleteTimerQueueTimer", Resource::kTimer, false, kParameter, 2},
    {"CoInitializeEx", Resource::kApartment, true, kThread, 0, kNotNegative},
    {"CoUninitialize", Resource::kApartment, false, kThread},
    {"SafeArrayLock", Resource::kArrayLock, true, kParameter, 1, kNotNegative},
    {"SafeArrayUnlock", Resource::kArrayLock, false, kParameter, 1},
    {"_aligned_malloc", Resource::kMemory, true, kResult, 0, kNotZero},
    {"_aligned_free", Resource::kMemory, false, kParameter, 1},
    {"malloc", Resource::kMemory, true, kResult, 0, kNotZero},
    {"calloc", Resource::kMemory, true, kResult, 0, kNotZero},
    {"realloc", Resource::kMemory, false, kParameter, 1},
    {"realloc", Resource::kMemory, true, kResult, 0, kNotZero},
    {"_strdup", Resource::kMemory, true, kResult, 0, kNotZero},
    {"free", Resource::kMemory, false, kParameter, 1},
};

} // namespace

std::span<const Ownership> OwnershipsOf(std::string_view function) noexcept
{
    const auto isOfFunction = [&](const Ownership& ownership) {
        return function == ownership.name;
    };
    const auto* const first =
        std::find_if(std::begin(kOwnerships), std::end(kOwnerships), isOfFunction);
    const auto* const last = std::find_if_not(first, std::end(kOwnerships), isOfFunction);
    return {first, last};
}

} // namespace vqrx::test::anomaly
