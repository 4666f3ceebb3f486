#include "GuardProgram.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <atomic>

namespace vqrx::guard::v0 {
namespace {

using client::v0::GuardArguments;

constexpr DWORD kWaitHintMs = 30000; // until the next checkpoint
constexpr DWORD kGuardFailed = ERROR_SERVICE_SPECIFIC_ERROR;

// The service control manager calls the functions below without a parameter for an object. So the
// one service of the process is here.
struct Service {
    GuardArguments arguments;
    SERVICE_STATUS_HANDLE handle = nullptr;
    system::win32::v1::UniqueKernelHandle stop;
    std::atomic<DWORD> checkpoint = 0;
    std::atomic<bool> isEnding = false;
    DWORD exitCode = 0;
};

Service* theService = nullptr; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

void Report(DWORD state, DWORD exitCode = NO_ERROR)
{
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwWin32ExitCode = exitCode;
    status.dwServiceSpecificExitCode = exitCode == kGuardFailed ? 1 : 0;
    const bool isPending = state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING;
    if (state == SERVICE_RUNNING) {
        status.dwControlsAccepted = SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN;
    }
    status.dwCheckPoint = isPending ? ++theService->checkpoint : 0;
    status.dwWaitHint = isPending ? kWaitHintMs : 0;
    SetServiceStatus(theService->handle, &status);
}

DWORD WINAPI OnControl(DWORD control, DWORD, void*, void*) noexcept
{
    switch (control) {
    case SERVICE_CONTROL_STOP:
    case SERVICE_CONTROL_SHUTDOWN:
        theService->isEnding = true;
        Report(SERVICE_STOP_PENDING);
        SetEvent(theService->stop.Get());
        return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
        return NO_ERROR;
    default:
        return ERROR_CALL_NOT_IMPLEMENTED;
    }
}

void OnReady()
{
    if (!theService->isEnding) {
        Report(SERVICE_RUNNING);
    }
}

void WINAPI ServiceMain(DWORD, wchar_t**) noexcept
{
    theService->handle = RegisterServiceCtrlHandlerExW(client::v0::kGuardName, OnControl, nullptr);
    if (theService->handle == nullptr) {
        return;
    }
    Report(SERVICE_START_PENDING);
    DWORD exitCode = NO_ERROR;
    try {
        RunGuard(theService->arguments, theService->stop.Get(), OnReady,
                 [] { Report(SERVICE_STOP_PENDING); });
    } catch (...) { // RunGuard has logged it, if there is a log
        exitCode = kGuardFailed;
    }
    theService->exitCode = exitCode;
    Report(SERVICE_STOPPED, exitCode);
}

} // namespace

int RunAsService(const GuardArguments& arguments)
{
    static Service service; // the service control manager's threads may call until the process ends
    service.arguments = arguments;
    service.stop.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    theService = &service;
    std::wstring name = client::v0::kGuardName;
    const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
    if (StartServiceCtrlDispatcherW(table) == FALSE) {
        return static_cast<int>(GetLastError());
    }
    return static_cast<int>(service.exitCode);
}

} // namespace vqrx::guard::v0
