#pragma once

#include <windows.h>

#include <fstream>
#include <string>

namespace vqrx::test {

/// Signals the test's event: the program has reached its state. Does nothing without such an event.
inline void SignalReady(const std::string& eventName)
{
    if (const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, eventName.c_str())) {
        SetEvent(event);
        CloseHandle(event);
    }
}

/// Makes a hidden top-level window.
inline HWND MakeWindow(WNDPROC procedure = DefWindowProcA)
{
    static const bool registered = [procedure] {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = procedure;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "dm_test_window";
        return RegisterClassA(&windowClass) != 0;
    }();
    return registered ? CreateWindowA("dm_test_window", "test", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10,
                                      nullptr, nullptr, GetModuleHandleA(nullptr), nullptr)
                      : nullptr;
}

/// Dispatches messages until WM_QUIT.
inline void PumpMessages()
{
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        DispatchMessageA(&message);
    }
}

/// Writes the exact command line of this program to a file in UTF-8. The file has the ending
/// ".part" until it is complete.
inline void WriteCommandLine(const std::string& file)
{
    const wchar_t* const text = GetCommandLineW();
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string line(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, line.data(), size, nullptr, nullptr);
    line.pop_back();
    const std::string part = file + ".part";
    std::ofstream(part, std::ios::binary) << line;
    MoveFileExA(part.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
}

/// Returns an argument of the program; an empty text if there are fewer arguments.
[[nodiscard]] inline std::string Argument(int argc, char** argv, int index)
{
    return index < argc ? argv[index] : "";
}

} // namespace vqrx::test
