// Presses a button in a window of another program, as a person would: waits, at most a minute,
// until there is a window with the title in the first argument, with a button that can be pressed
// and that has the number in the second argument. Exit code 0: pressed; 1: no such button.
#include "ChildProgram.h"

#include <string>

int main(int argc, char** argv)
{
    const std::string title = vqrx::test::Argument(argc, argv, 1);
    const int number = std::stoi(vqrx::test::Argument(argc, argv, 2));
    constexpr int kTries = 600;
    for (int tries = 0; tries < kTries; ++tries) {
        HWND const window = FindWindowA(nullptr, title.c_str());
        HWND const button = window != nullptr ? GetDlgItem(window, number) : nullptr;
        if (button != nullptr && IsWindowEnabled(button) != FALSE) {
            SendMessageA(window, WM_COMMAND, static_cast<WPARAM>(number),
                         reinterpret_cast<LPARAM>(button));
            return 0;
        }
        Sleep(100);
    }
    return 1;
}
