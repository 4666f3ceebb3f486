// A Windows service. Arguments: its name; optionally the milliseconds that it stays start-pending
// before it runs; optionally an event for which it waits before these milliseconds begin. It ends
// on a stop request, or with exit code 5 when the event "<name>_die" is signalled. With the
// arguments "--note" and a file it is not a service and behaves as writes_command_line.
#include "ChildProgram.h"

#include <cstdlib>

namespace {

std::string name;
DWORD pendingMs = 0;
std::string holdEvent;
SERVICE_STATUS_HANDLE status = nullptr;
HANDLE stopEvent = nullptr;

void Report(DWORD state)
{
    SERVICE_STATUS current{};
    current.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    current.dwCurrentState = state;
    current.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    SetServiceStatus(status, &current);
}

DWORD WINAPI Handle(DWORD control, DWORD, void*, void*)
{
    if (control == SERVICE_CONTROL_STOP) {
        SetEvent(stopEvent);
    }
    return NO_ERROR;
}

void WINAPI ServiceMain(DWORD, char**)
{
    status = RegisterServiceCtrlHandlerExA(name.c_str(), Handle, nullptr);
    Report(SERVICE_START_PENDING);
    if (const HANDLE hold = OpenEventA(SYNCHRONIZE, FALSE, holdEvent.c_str())) {
        WaitForSingleObject(hold, INFINITE);
        CloseHandle(hold);
    }
    Sleep(pendingMs);
    Report(SERVICE_RUNNING);
    const HANDLE dieEvent = CreateEventA(nullptr, TRUE, FALSE, (name + "_die").c_str());
    const HANDLE events[] = {stopEvent, dieEvent};
    if (WaitForMultipleObjects(2, events, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
        ExitProcess(5);
    }
    Report(SERVICE_STOPPED);
}

} // namespace

int main(int argc, char** argv)
{
    name = vqrx::test::Argument(argc, argv, 1);
    if (name == "--note") {
        vqrx::test::WriteCommandLine(vqrx::test::Argument(argc, argv, 2));
        Sleep(INFINITE);
    }
    holdEvent = vqrx::test::Argument(argc, argv, 3);
    pendingMs = std::strtoul(vqrx::test::Argument(argc, argv, 2).c_str(), nullptr, 10);
    stopEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    SERVICE_TABLE_ENTRYA table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
    return StartServiceCtrlDispatcherA(table) != FALSE ? 0 : 1;
}
