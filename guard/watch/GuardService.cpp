#include "GuardProgram.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <mutex>

namespace vqrx::guard::v0 {
namespace {

using client::v0::GuardArguments;

constexpr DWORD kWaitHintMs =
    100000; // until the next checkpoint; longer than a check and EndHanging()
constexpr DWORD kGuardFailed = ERROR_SERVICE_SPECIFIC_ERROR;

// The service control manager calls the functions below without a parameter for an object. So the
// one service of the process is here.
struct Service {
    GuardArguments arguments;
    SERVICE_STATUS_HANDLE handle = nullptr;
    system::win32::v1::UniqueKernelHandle stop;
    DWORD exitCode = 0;
    // Held during each report, so that the service control manager gets them in order. Guards the
    // two below.
    std::mutex reporting;
    DWORD checkpoint = 0;
    DWORD lastState = 0; // that was reported
};

Service* theService = nullptr; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

// A control may arrive at any moment. Its report must not follow that of the end, and the guard
// must not be reported as running after its end was reported.
void Report(DWORD state, DWORD exitCode = NO_ERROR)
{
    const std::scoped_lock lock(theService->reporting);
    DWORD& last = theService->lastState;
    if (last == SERVICE_STOPPED || (last == SERVICE_STOP_PENDING && state == SERVICE_RUNNING)) {
        return;
    }
    last = state;
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
        Report(SERVICE_STOP_PENDING);
        SetEvent(theService->stop.Get());
        return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
        return NO_ERROR;
    default:
        return ERROR_CALL_NOT_IMPLEMENTED;
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
        RunGuard(
            theService->arguments, theService->stop.Get(), [] { Report(SERVICE_RUNNING); },
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
