// Child program with the name of the SNMP agent. It closes its window and ends after the keystrokes
// X and Q, posted without further data. Argument: the event that it signals when the window exists.
#include "ChildProgram.h"

namespace {

bool crossed = false;

LRESULT CALLBACK WaitForKeystrokes(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CHAR) {
        if (crossed && wParam == 'Q' && lParam == 0) {
            DestroyWindow(window);
            PostQuitMessage(0);
        }
        crossed = wParam == 'X' && lParam == 0;
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow(WaitForKeystrokes);
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    vqrx::test::PumpMessages();
    return 0;
}
