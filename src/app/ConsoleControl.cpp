#include "ConsoleControl.h"

#include <stdexcept>

namespace vqrx::app::v0 {
namespace {

// Initialised before main begins, so the current thread is the main thread.
const DWORD kMainThreadId = GetCurrentThreadId();

bool EndsTheProgram(DWORD ctrlType) noexcept
{
    switch (ctrlType) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
    case CTRL_CLOSE_EVENT:
    case CTRL_SHUTDOWN_EVENT:
        return true;
    default:
        return false;
    }
}

} // namespace

BOOL WINAPI ConsoleCtrlHandler(DWORD ctrlType) noexcept
{
    if (!EndsTheProgram(ctrlType)) {
        return FALSE;
    }
    if (kMainThreadId != 0) {
        PostThreadMessageA(kMainThreadId, WM_QUIT, 0, 0);
    }
    return TRUE;
}

void InstallConsoleCtrlHandler()
{
    if (SetConsoleCtrlHandler(ConsoleCtrlHandler, TRUE) == FALSE) {
        throw std::runtime_error("Could not set control handler");
    }
}

} // namespace vqrx::app::v0
