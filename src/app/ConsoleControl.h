#pragma once

#include <windows.h>

namespace vqrx::app::v0 {

/// Asks the main thread to end the program, by posting WM_QUIT to it. Does so for Ctrl+C,
/// Ctrl+Break, a closed console window and a system shutdown. (Windows sends the last one only to
/// services.) Returns at once: it does not wait for
/// the shutdown of the program.
/// After Ctrl+C and Ctrl+Break the shutdown runs to its end. It may be incomplete after a closed
/// console or a system shutdown: then Windows ends the process as soon as this function returns.
/// Windows calls it on a new thread for each event.
/// @param ctrlType  the event, one of the CTRL_*_EVENT values
/// @return TRUE for the four events; FALSE for every other event: the next handler then runs
BOOL WINAPI ConsoleCtrlHandler(DWORD ctrlType) noexcept;

/// Makes ConsoleCtrlHandler the handler of the process's console events.
/// @throws std::runtime_error "Could not set control handler"
void InstallConsoleCtrlHandler();

} // namespace vqrx::app::v0
