#pragma once

#include <windows.h>

namespace vqrx::app::v0 {

/// Ends the program in an orderly way on Ctrl+C, Ctrl+Break, a closed console and a system
/// shutdown, by posting WM_QUIT to the main thread; returns at once. Runs on a thread that Windows
/// makes for the event.
/// @return FALSE for every other event, so that the next handler runs
BOOL WINAPI ConsoleCtrlHandler(DWORD ctrlType) noexcept;

/// @throws std::runtime_error "Could not set control handler"
void InstallConsoleCtrlHandler();

} // namespace vqrx::app::v0
