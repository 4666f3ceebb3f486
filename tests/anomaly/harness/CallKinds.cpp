#include "CallKinds.h"

#include <windows.h>

#include <cerrno>
#include <iterator>

namespace vqrx::test::anomaly {
namespace {

constexpr auto kNoError = ErrorPlace::kNone;
constexpr auto kLast = ErrorPlace::kLastError;
constexpr auto kErrno = ErrorPlace::kErrnoValue;

constexpr std::uint64_t kInvalidHandle = ~std::uint64_t{0};
constexpr std::uint64_t kMinusOne = 0xFFFFFFFF;       // as int and as DWORD
constexpr std::uint64_t kNoMemoryResult = 0x8007000E; // E_OUTOFMEMORY

constexpr const char* kNoColours = "the text appears, without its colour or title";
constexpr const char* kFigureIsZero = "the figure of the performance report is 0";
constexpr const char* kPolls = "whoever lacks the object looks again and again instead";
constexpr const char* kNoWindows = "the process counts as one without windows";
constexpr const char* kDeaf = "a process that does not react is terminated";
constexpr const char* kFlushedBefore = "all content was flushed before";
constexpr const char* kCreatesAgain =
    "the file is opened without being cut, so it keeps its content";
constexpr const char* kMayExist = "the folder may exist already";
constexpr const char* kCountsAsEnded = "a wait that fails counts as one that has ended";
constexpr const char* kAskedAgain = "the process is asked alone";

// In the order of the alphabet, by library.
constexpr CallKind kKinds[] = {
    // KERNEL32
    {"AssignProcessToJobObject", 0, kLast, ERROR_ACCESS_DENIED},
    {"CopyFileA", 0, kLast, ERROR_DISK_FULL},
    {"CreateConsoleScreenBuffer", kInvalidHandle, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateDirectoryA", 0, kLast, ERROR_ACCESS_DENIED},
    {"CreateDirectoryW", 0, kLast, ERROR_ACCESS_DENIED},
    {"CreateEventA", 0, kLast, ERROR_NOT_ENOUGH_MEMORY, kPolls},
    {"CreateEventW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateFileA", kInvalidHandle, kLast, ERROR_ACCESS_DENIED},
    {"CreateFileW", kInvalidHandle, kLast, ERROR_ACCESS_DENIED},
    {"CreateJobObjectW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateProcessA", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateProcessW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateSemaphoreA", 0, kLast, ERROR_NOT_ENOUGH_MEMORY, kPolls},
    {"CreateTimerQueueTimer", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateToolhelp32Snapshot", kInvalidHandle, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"DeleteFileA", 0, kLast, ERROR_ACCESS_DENIED},
    {"DeleteFileW", 0, kLast, ERROR_ACCESS_DENIED},
    {"ExpandEnvironmentStringsW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"FindFirstFileExW", kInvalidHandle, kLast, ERROR_ACCESS_DENIED},
    {"FindNextFileW", 0, kLast, ERROR_ACCESS_DENIED},
    {"FlushFileBuffers", 0, kLast, ERROR_DISK_FULL},
    {"FileTimeToSystemTime", 0, kLast, ERROR_INVALID_PARAMETER},
    {"FormatMessageA", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"GetConsoleMode", 0, kLast, ERROR_INVALID_HANDLE},
    {"GetConsoleScreenBufferInfo", 0, kLast, ERROR_INVALID_HANDLE, kNoColours},
    {"GetDiskFreeSpaceExA", 0, kLast, ERROR_ACCESS_DENIED},
    {"GetEnvironmentStringsW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"GetExitCodeProcess", 0, kLast, ERROR_ACCESS_DENIED},
    {"GetFileAttributesA", kMinusOne, kLast, ERROR_ACCESS_DENIED},
    {"GetFileAttributesW", kMinusOne, kLast, ERROR_ACCESS_DENIED},
    {"GetFileInformationByHandle", 0, kLast, ERROR_IO_DEVICE},
    {"GetFileSizeEx", 0, kLast, ERROR_IO_DEVICE},
    {"GetFileType", 0, kLast, ERROR_INVALID_HANDLE},
    {"GetFullPathNameW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"GetProcessHandleCount", 0, kLast, ERROR_ACCESS_DENIED, kFigureIsZero},
    {"GetProcessTimes", 0, kLast, ERROR_ACCESS_DENIED, kFigureIsZero},
    {"GetStdHandle", kInvalidHandle, kLast, ERROR_INVALID_HANDLE, kNoColours},
    {"GetSystemDirectoryW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"GetSystemTimes", 0, kLast, ERROR_ACCESS_DENIED, kFigureIsZero},
    {"GetTempFileNameW", 0, kLast, ERROR_ACCESS_DENIED},
    {"GlobalMemoryStatusEx", 0, kLast, ERROR_NOT_ENOUGH_MEMORY, kFigureIsZero},
    {"InitializeCriticalSectionAndSpinCount", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"K32GetProcessMemoryInfo", 0, kLast, ERROR_ACCESS_DENIED, kFigureIsZero},
    {"LoadLibraryExW", 0, kLast, ERROR_MOD_NOT_FOUND},
    {"MoveFileExA", 0, kLast, ERROR_ACCESS_DENIED},
    {"MoveFileExW", 0, kLast, ERROR_ACCESS_DENIED},
    {"MultiByteToWideChar", 0, kLast, ERROR_INVALID_PARAMETER},
    {"OpenEventW", 0, kLast, ERROR_ACCESS_DENIED},
    {"OpenProcess", 0, kLast, ERROR_ACCESS_DENIED},
    {"Process32FirstW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"Process32NextW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"ProcessIdToSessionId", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryDosDeviceW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"QueryFullProcessImageNameW", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryInformationJobObject", 0, kLast, ERROR_ACCESS_DENIED},
    {"ReadFile", 0, kLast, ERROR_IO_DEVICE},
    {"ReadProcessMemory", 0, kLast, ERROR_PARTIAL_COPY},
    {"RemoveDirectoryA", 0, kLast, ERROR_ACCESS_DENIED},
    {"SetConsoleActiveScreenBuffer", 0, kLast, ERROR_INVALID_HANDLE},
    {"SetConsoleCtrlHandler", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"SetConsoleCursorInfo", 0, kLast, ERROR_INVALID_HANDLE, kNoColours},
    {"SetConsoleMode", 0, kLast, ERROR_INVALID_HANDLE},
    {"SetConsoleTextAttribute", 0, kLast, ERROR_INVALID_HANDLE, kNoColours},
    {"SetConsoleTitleA", 0, kLast, ERROR_NOT_ENOUGH_MEMORY, kNoColours},
    {"SetCurrentDirectoryA", 0, kLast, ERROR_FILE_NOT_FOUND},
    {"SetFileInformationByHandle", 0, kLast, ERROR_ACCESS_DENIED},
    {"SetInformationJobObject", 0, kLast, ERROR_ACCESS_DENIED},
    {"SignalObjectAndWait", kMinusOne, kLast, ERROR_INVALID_HANDLE, kPolls},
    {"TerminateJobObject", 0, kLast, ERROR_ACCESS_DENIED},
    {"TerminateProcess", 0, kLast, ERROR_ACCESS_DENIED},
    {"WaitForMultipleObjects", kMinusOne, kLast, ERROR_NOT_ENOUGH_MEMORY, kAskedAgain},
    {"WaitForSingleObject", kMinusOne, kLast, ERROR_NOT_ENOUGH_MEMORY, kCountsAsEnded},
    {"WideCharToMultiByte", 0, kLast, ERROR_INVALID_PARAMETER},
    {"WriteConsoleOutputW", 0, kLast, ERROR_INVALID_HANDLE},
    {"WriteConsoleW", 0, kLast, ERROR_INVALID_HANDLE},
    {"WriteFile", 0, kLast, ERROR_DISK_FULL},
    // ADVAPI32
    {"ChangeServiceConfig2W", 0, kLast, ERROR_ACCESS_DENIED},
    {"ChangeServiceConfigW", 0, kLast, ERROR_ACCESS_DENIED},
    {"ConvertSidToStringSidW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"ConvertStringSecurityDescriptorToSecurityDescriptorW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"ConvertStringSidToSidW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateServiceW", 0, kLast, ERROR_ACCESS_DENIED},
    {"EnumServicesStatusExA", 0, kLast, ERROR_ACCESS_DENIED},
    {"GetNamedSecurityInfoW", ERROR_ACCESS_DENIED, kNoError, 0},
    {"GetSecurityInfo", ERROR_ACCESS_DENIED, kNoError, 0},
    {"GetTokenInformation", 0, kLast, ERROR_ACCESS_DENIED},
    {"LookupAccountNameW", 0, kLast, ERROR_NONE_MAPPED},
    {"LookupAccountSidW", 0, kLast, ERROR_NONE_MAPPED},
    {"OpenProcessToken", 0, kLast, ERROR_ACCESS_DENIED},
    {"OpenSCManagerA", 0, kLast, ERROR_ACCESS_DENIED},
    {"OpenSCManagerW", 0, kLast, ERROR_ACCESS_DENIED},
    {"OpenServiceA", 0, kLast, ERROR_ACCESS_DENIED},
    {"OpenServiceW", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryServiceConfigA", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryServiceConfigW", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryServiceStatus", 0, kLast, ERROR_ACCESS_DENIED},
    {"QueryServiceStatusEx", 0, kLast, ERROR_ACCESS_DENIED},
    {"RegDeleteKeyValueW", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegEnumKeyExW", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegGetValueA", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegGetValueW", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegOpenKeyExA", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegOpenKeyExW", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegQueryValueExA", ERROR_ACCESS_DENIED, kNoError, 0},
    {"RegisterEventSourceW", 0, kLast, ERROR_ACCESS_DENIED},
    {"ReportEventW", 0, kLast, ERROR_DISK_FULL},
    {"StartServiceW", 0, kLast, ERROR_ACCESS_DENIED},
    // USER32
    {"EnumWindows", 0, kLast, ERROR_ACCESS_DENIED, kNoWindows},
    {"GetMessageA", kMinusOne, kLast, ERROR_INVALID_HANDLE, "the loop asks for the next message"},
    {"GetWindowThreadProcessId", 0, kLast, ERROR_INVALID_WINDOW_HANDLE, kNoWindows},
    {"PostMessageA", 0, kLast, ERROR_ACCESS_DENIED, kDeaf},
    {"PostThreadMessageA", 0, kLast, ERROR_INVALID_THREAD_ID, kDeaf},
    // SHELL32, SHLWAPI, QUARTZ, ntdll
    {"AMGetErrorTextA", 0, kNoError, 0},
    {"CommandLineToArgvW", 0, kLast, ERROR_NOT_ENOUGH_MEMORY},
    {"NtQueryInformationProcess", 0xC0000022, kNoError, 0}, // STATUS_ACCESS_DENIED
    {"PathFileExistsA", 0, kLast, ERROR_ACCESS_DENIED, kCreatesAgain},
    // OLEAUT32
    {"SafeArrayCreateVector", 0, kNoError, 0},
    {"SafeArrayDestroy", 0x8002000D, kNoError, 0},   // DISP_E_ARRAYISLOCKED
    {"SafeArrayGetLBound", 0x8002000B, kNoError, 0}, // DISP_E_BADINDEX
    {"SafeArrayGetUBound", 0x8002000B, kNoError, 0},
    {"SafeArrayGetVartype", 0x80070057, kNoError, 0}, // E_INVALIDARG
    {"SafeArrayLock", 0x8000FFFF, kNoError, 0},       // E_UNEXPECTED
    {"SafeArrayPutElement", kNoMemoryResult, kNoError, 0},
    {"SysAllocString", 0, kNoError, 0},
    {"SysAllocStringLen", 0, kNoError, 0},
    // ole32
    {"CoCreateInstance", kNoMemoryResult, kNoError, 0},
    {"CoDisconnectObject", 0x80004005, kNoError, 0,
     "the clients' calls fail when the process ends"},
    {"CoInitializeEx", kNoMemoryResult, kNoError, 0},
    {"CoInitializeSecurity", kNoMemoryResult, kNoError, 0},
    {"CoMarshalInterface", kNoMemoryResult, kNoError, 0},
    {"CoReleaseMarshalData", kNoMemoryResult, kNoError, 0,
     "COM frees the data when the thread leaves its apartment", true},
    {"CoSetProxyBlanket", kNoMemoryResult, kNoError, 0},
    {"CreateItemMoniker", kNoMemoryResult, kNoError, 0},
    {"CreateStreamOnHGlobal", kNoMemoryResult, kNoError, 0},
    {"GetRunningObjectTable", kNoMemoryResult, kNoError, 0},
    // msvcrt
    {"_aligned_malloc", 0, kErrno, ENOMEM},
    {"_beginthreadex", 0, kErrno, EAGAIN},
    {"_fstat64", kMinusOne, kErrno, EIO},
    {"_lseeki64", ~std::uint64_t{0}, kErrno, EIO},
    {"_localtime64", 0, kErrno, EINVAL},
    {"_mkdir", kMinusOne, kErrno, EACCES, kMayExist},
    {"_read", kMinusOne, kErrno, EIO},
    {"_stat64", kMinusOne, kErrno, EACCES},
    {"putc", kMinusOne, kErrno, ENOSPC},
    {"_strdup", 0, kErrno, ENOMEM},
    {"_wfopen", 0, kErrno, EACCES},
    {"_wstat64", kMinusOne, kErrno, EACCES},
    {"_write", kMinusOne, kErrno, ENOSPC},
    {"calloc", 0, kErrno, ENOMEM},
    {"fclose", kMinusOne, kErrno, ENOSPC, kFlushedBefore, true},
    {"fflush", kMinusOne, kErrno, ENOSPC},
    {"fopen", 0, kErrno, EACCES},
    {"fputc", kMinusOne, kErrno, ENOSPC},
    {"fputs", kMinusOne, kErrno, ENOSPC},
    {"fread", 0, kErrno, EIO},
    {"fwrite", 0, kErrno, ENOSPC},
    {"malloc", 0, kErrno, ENOMEM},
    {"realloc", 0, kErrno, ENOMEM},
    {"remove", kMinusOne, kErrno, EACCES},
    {"rename", kMinusOne, kErrno, EACCES},
};

constexpr const char* kHeaderFollows = "the first record is followed by the header";

constexpr QuietPlace kQuietPlaces[] = {
    {"Worker::Start", "_beginthreadex",
     "standard error gets a line, and the next record tries again"},
    {"CreateRing", "_lseeki64", kHeaderFollows},
    {"CreateRing", "_write", kHeaderFollows},
    {"ConsoleSink::Write", "fflush",
     "standard output, which is tied to standard error, has nothing to flush"},
    {"ClientApartment::ClientApartment", "CoCreateInstance",
     "without the policy, COM lets the sender of an object choose the class that rebuilds it"},
    {"BoundedApartment::~BoundedApartment", "CreateTimerQueueTimer",
     "the main thread leaves COM without a limit"},
    {"IdentifySupervisor", "",
     "what cannot be found out leaves open who answers; only a stranger is refused"},
    {"ReasonToRefuse", "RegGetValueW",
     "the code page of this program counts as that of the system"},
    {"SupervisorClient::Attach", "SafeArrayDestroy", "nobody has locked the array"},
    {"FindFormerChildren", "OpenProcess",
     "a process that may not be opened counts as one that runs, and so as no former supervisor"},
    {"FindFormerChildren", "QueryFullProcessImageNameW", "only its time of creation matters"},
    {"GatherCrashDialogFacts", "RegGetValueA", "the value counts as not set, which is a warning"},
    {"FindElsewhere", "ProcessIdToSessionId", "the hint about another session is left out"},
    {"MayBeThere", "GetFileAttributesW", "the file is checked and read as one that is there"},
    {"OpenLockFile", "CreateFileW", "the lock is asked for again while Windows may delete it"},
    {"client::Doctor", "OpenProcess", "doctor shows only what is known to be wrong with a daemon"},
    {"client::Doctor", "QueryFullProcessImageNameW",
     "doctor shows only what is known to be wrong with a daemon"},
    {"GatherFirewallRules", "ExpandEnvironmentStringsW",
     "a path without variables is the same without it"},
    {"ReadSecurity", "LookupAccountSidW", "the SID stands in place of the name"},
    {"ReadSecurity", "ConvertSidToStringSidW", "no check trusts a user whose SID is not known"},
    {"HasMachineLimits", "RegGetValueW", "the check says that it sees no limits"},
    {"GatherRightsFacts", "RegGetValueW",
     "without the account that was noted for the supervisor, one user less is trusted"},
    {"GatherProxyFacts", "RegGetValueW", "the proxy counts as not registered, which is a failure"},
    {"GatherInstallationFacts", "RegOpenKeyExA", "the other key names the firmware root"},
    {"GatherInstallationFacts", "GetDiskFreeSpaceExA",
     "the check is about the folder; too little room is a further warning"},
    {"IsRecordFolder", "_wstat64", "the path counts as that of a file"},
};

constexpr FatalPlace kFatalPlaces[] = {
    {"__emutls_get_address",
     "libgcc calls abort if there is no memory for a thread's own variables, which libstdc++ needs for "
     "the first exception of a thread and for its first output to a stream"},
};

} // namespace

std::span<const QuietPlace> QuietPlaces() noexcept
{
    return kQuietPlaces;
}

std::span<const FatalPlace> FatalPlaces() noexcept
{
    return kFatalPlaces;
}

const CallKind* KindOf(std::string_view function) noexcept
{
    for (const CallKind& kind : kKinds) {
        if (function == kind.name) {
            return &kind;
        }
    }
    return nullptr;
}

} // namespace vqrx::test::anomaly
