#include "CallKinds.h"

#include <algorithm>
#include <iterator>

namespace vqrx::test::anomaly {
namespace {

constexpr auto kResult = Where::result;
constexpr auto kParameter = Where::parameter;
constexpr auto kThrough = Where::throughParameter;
constexpr auto kThread = Where::thread;

constexpr auto kHandle = Success::handle;
constexpr auto kNotZero = Success::notZero;
constexpr auto kZero = Success::zero;
constexpr auto kNotNegative = Success::notNegative;

// The lines of one function stand together. CreateProcessA and VariantClear are not here:
// Injection.cpp looks into their structures.
constexpr Ownership kOwnerships[] = {
    {"CreateEventA", Resource::handle, true, kResult, 0, kHandle},
    {"CreateEventW", Resource::handle, true, kResult, 0, kHandle},
    {"CreateFileA", Resource::handle, true, kResult, 0, kHandle},
    {"CreateFileW", Resource::handle, true, kResult, 0, kHandle},
    {"CreateJobObjectW", Resource::handle, true, kResult, 0, kHandle},
    {"CreateSemaphoreA", Resource::handle, true, kResult, 0, kHandle},
    {"CreateToolhelp32Snapshot", Resource::handle, true, kResult, 0, kHandle},
    {"OpenProcess", Resource::handle, true, kResult, 0, kHandle},
    {"OpenProcessToken", Resource::handle, true, kThrough, 3, kNotZero},
    {"_beginthreadex", Resource::handle, true, kResult, 0, kHandle},
    {"CloseHandle", Resource::handle, false, kParameter, 1},
    {"CloseHandle", Resource::process, false, kParameter, 1},
    {"OpenSCManagerA", Resource::serviceHandle, true, kResult, 0, kHandle},
    {"OpenSCManagerW", Resource::serviceHandle, true, kResult, 0, kHandle},
    {"OpenServiceA", Resource::serviceHandle, true, kResult, 0, kHandle},
    {"OpenServiceW", Resource::serviceHandle, true, kResult, 0, kHandle},
    {"CloseServiceHandle", Resource::serviceHandle, false, kParameter, 1},
    {"RegOpenKeyExA", Resource::registryKey, true, kThrough, 5, kZero},
    {"RegOpenKeyExW", Resource::registryKey, true, kThrough, 5, kZero},
    {"RegCloseKey", Resource::registryKey, false, kParameter, 1},
    {"SysAllocString", Resource::text, true, kResult, 0, kNotZero},
    {"SysAllocStringLen", Resource::text, true, kResult, 0, kNotZero},
    {"SysFreeString", Resource::text, false, kParameter, 1},
    {"InitializeCriticalSection", Resource::criticalSection, true, kParameter, 1},
    {"InitializeCriticalSectionAndSpinCount", Resource::criticalSection, true, kParameter, 1,
     kNotZero},
    {"DeleteCriticalSection", Resource::criticalSection, false, kParameter, 1},
    {"CommandLineToArgvW", Resource::localMemory, true, kResult, 0, kNotZero},
    {"ConvertSidToStringSidW", Resource::localMemory, true, kThrough, 2, kNotZero},
    {"ConvertStringSecurityDescriptorToSecurityDescriptorW", Resource::localMemory, true, kThrough,
     3, kNotZero},
    {"ConvertStringSidToSidW", Resource::localMemory, true, kThrough, 2, kNotZero},
    {"GetNamedSecurityInfoW", Resource::localMemory, true, kThrough, 8, kZero},
    {"LocalFree", Resource::localMemory, false, kParameter, 1},
    {"fopen", Resource::file, true, kResult, 0, kNotZero},
    {"_wfopen", Resource::file, true, kResult, 0, kNotZero},
    {"fclose", Resource::file, false, kParameter, 1},
    {"FindFirstFileA", Resource::search, true, kResult, 0, kHandle},
    {"FindClose", Resource::search, false, kParameter, 1},
    {"CreateTimerQueueTimer", Resource::timer, true, kThrough, 1, kNotZero},
    {"DeleteTimerQueueTimer", Resource::timer, false, kParameter, 2},
    {"CoInitializeEx", Resource::apartment, true, kThread, 0, kNotNegative},
    {"CoUninitialize", Resource::apartment, false, kThread},
    {"SafeArrayLock", Resource::arrayLock, true, kParameter, 1, kNotNegative},
    {"SafeArrayUnlock", Resource::arrayLock, false, kParameter, 1},
    {"_aligned_malloc", Resource::memory, true, kResult, 0, kNotZero},
    {"_aligned_free", Resource::memory, false, kParameter, 1},
    {"malloc", Resource::memory, true, kResult, 0, kNotZero},
    {"calloc", Resource::memory, true, kResult, 0, kNotZero},
    {"realloc", Resource::memory, false, kParameter, 1},
    {"realloc", Resource::memory, true, kResult, 0, kNotZero},
    {"_strdup", Resource::memory, true, kResult, 0, kNotZero},
    {"free", Resource::memory, false, kParameter, 1},
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
