#include "CallKinds.h"

namespace vqrx::test::anomaly {
namespace {

constexpr const char* kNoResult = "has no result that says so";
constexpr const char* kOwnValue = "gives back what the process has";
constexpr const char* kValidThing = "fails only for a thing that is not valid";
constexpr const char* kComputes = "computes with the memory that it gets";
constexpr const char* kEnds = "does not return";
constexpr const char* kNothingToDo =
    "its result says whether there is something, not that it failed";
constexpr const char* kUnwinds = "carries exceptions; without it none can be thrown";
constexpr const char* kThreadRecord =
    "is part of the run-time library's own record of a thread, which does without it";
constexpr const char* kStart = "is called only before the program begins";

constexpr SureCall kSureCalls[] = {
    // KERNEL32
    {"CloseHandle", kValidThing},
    {"DeleteCriticalSection", kNoResult},
    {"DeleteTimerQueueTimer", kValidThing},
    {"DuplicateHandle", kThreadRecord},
    {"EnterCriticalSection", kNoResult},
    {"FindClose", kValidThing},
    {"FreeEnvironmentStringsW", kNoResult},
    {"GetACP", kOwnValue},
    {"GetCommandLineW", kOwnValue},
    {"GetCurrentProcess", kOwnValue},
    {"GetCurrentProcessId", kOwnValue},
    {"GetCurrentThread", kOwnValue},
    {"GetCurrentThreadId", kOwnValue},
    {"GetDriveTypeW", kNothingToDo},
    {"GetLastError", kOwnValue},
    {"GetModuleFileNameW", kOwnValue},
    {"GetModuleHandleA", kOwnValue},
    {"GetModuleHandleW", kOwnValue},
    {"GetProcAddress", kOwnValue},
    {"GetProcessId", kValidThing},
    {"GetStartupInfoA", kStart},
    {"GetSystemTimeAsFileTime", kNoResult},
    {"GetThreadErrorMode", kOwnValue},
    {"GetThreadPriority", kThreadRecord},
    {"GetTickCount", kOwnValue},
    {"GetTickCount64", kOwnValue},
    {"InitializeCriticalSection", kNoResult},
    {"InitializeCriticalSectionEx", "only the test calls it"},
    {"IsDBCSLeadByteEx", kComputes},
    {"IsDebuggerPresent", kOwnValue},
    {"IsValidCodePage", kComputes},
    {"LeaveCriticalSection", kNoResult},
    {"LocalFree", kValidThing},
    {"QueryPerformanceCounter", kOwnValue},
    {"QueryPerformanceFrequency", kOwnValue},
    {"RaiseException", kUnwinds},
    {"ReleaseSemaphore", kValidThing},
    {"ResetEvent", kValidThing},
    {"RtlCaptureContext", kUnwinds},
    {"RtlLookupFunctionEntry", kUnwinds},
    {"RtlUnwindEx", kUnwinds},
    {"RtlVirtualUnwind", kUnwinds},
    {"SetErrorMode", kNoResult},
    {"SetEvent", kValidThing},
    {"SetLastError", kNoResult},
    {"SetThreadErrorMode", kValidThing},
    {"SetUnhandledExceptionFilter", kNoResult},
    {"Sleep", kNoResult},
    {"SwitchToThread", kNothingToDo},
    {"TlsAlloc", kStart},
    {"TlsGetValue", kValidThing},
    {"TlsSetValue", kValidThing},
    {"TryEnterCriticalSection", kNothingToDo},
    {"VirtualAlloc", "only the test calls it"},
    {"VirtualProtect", kStart},
    {"VirtualQuery", kStart},
    {"__C_specific_handler", kUnwinds},
    {"LCMapStringW", kComputes},
    {"lstrcmpiW", kComputes},
    // ADVAPI32
    {"CloseServiceHandle", kValidThing},
    {"DeregisterEventSource", kValidThing},
    {"EqualSid", kComputes},
    {"GetAce", kValidThing},
    {"IsWellKnownSid", kComputes},
    {"RegCloseKey", kValidThing},
    // USER32
    {"DispatchMessageA", kNothingToDo},
    {"PeekMessageA", kNothingToDo},
    {"TranslateMessage", kNothingToDo},
    // SHELL32
    {"IsUserAnAdmin", kNothingToDo},
    // OLEAUT32
    {"SafeArrayGetDim", kComputes},
    {"SafeArrayUnlock", kValidThing},
    {"SysFreeString", kNoResult},
    {"SysStringLen", kComputes},
    {"VariantClear", kValidThing},
    {"VariantInit", kNoResult},
    // ole32
    {"CoUninitialize", kNoResult},
    {"StringFromGUID2", kComputes},
    // msvcrt
    {"___lc_codepage_func", kOwnValue},
    {"___mb_cur_max_func", kOwnValue},
    {"__getmainargs", kStart},
    {"__initenv", kStart},
    {"__iob_func", kOwnValue},
    {"__set_app_type", kStart},
    {"__setusermatherr", kStart},
    {"_acmdln", kStart},
    {"_aligned_free", kNoResult},
    {"_amsg_exit", kEnds},
    {"_cexit", kEnds},
    {"_commode", kStart},
    {"_ctime64", "fails only for a time that no clock shows"},
    {"_endthreadex", kEnds},
    {"_errno", kOwnValue},
    {"_exit", kEnds},
    {"_fileno", kValidThing},
    {"_fmode", kStart},
    {"_ftime64", kNoResult},
    {"_initterm", kStart},
    {"_lock", kNoResult},
    {"_mktime64", "fails only for a time that no clock shows"},
    {"_onexit", kStart},
    {"_setjmp", kComputes},
    {"_setmode", kValidThing},
    {"_stricmp", kComputes},
    {"_time64", kOwnValue},
    {"_ultoa", kComputes},
    {"_unlock", kNoResult},
    {"_vsnprintf", kComputes},
    {"_wcsicmp", kComputes},
    {"abort", kEnds},
    {"exit", kEnds},
    {"free", kNoResult},
    {"getenv", kOwnValue},
    {"isalnum", kComputes},
    {"isalpha", kComputes},
    {"iscntrl", kComputes},
    {"islower", kComputes},
    {"isspace", kComputes},
    {"isupper", kComputes},
    {"iswctype", kComputes},
    {"isxdigit", kComputes},
    {"localeconv", kOwnValue},
    {"longjmp", kComputes},
    {"memchr", kComputes},
    {"memcmp", kComputes},
    {"memcpy", kComputes},
    {"memmove", kComputes},
    {"memset", kComputes},
    {"rand", kComputes},
    {"srand", kNoResult},
    {"strchr", kComputes},
    {"strcmp", kComputes},
    {"strcoll", kComputes},
    {"strerror", kOwnValue},
    {"strftime", kComputes},
    {"strlen", kComputes},
    {"strncmp", kComputes},
    {"strrchr", kComputes},
    {"strstr", kComputes},
    {"strtol", kComputes},
    {"strtoul", kComputes},
    {"strxfrm", kComputes},
    {"tolower", kComputes},
    {"toupper", kComputes},
    {"towlower", kComputes},
    {"towupper", kComputes},
    {"wcscat", kComputes},
    {"wcscmp", kComputes},
    {"wcscoll", kComputes},
    {"wcscpy", kComputes},
    {"wcsftime", kComputes},
    {"wcslen", kComputes},
    {"wcsstr", kComputes},
    {"wcstoul", kComputes},
    {"wcsxfrm", kComputes},
};

} // namespace

const char* WhySure(std::string_view function) noexcept
{
    for (const SureCall& call : kSureCalls) {
        if (function == call.name) {
            return call.reason;
        }
    }
    return nullptr;
}

} // namespace vqrx::test::anomaly
