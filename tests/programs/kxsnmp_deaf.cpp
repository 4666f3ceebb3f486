// Child program with the name of the SNMP agent. It ignores keystrokes and ends on WM_QUIT. Its
// exit code is the number of X keystrokes that it received. Argument: the event that it signals
// when the window exists.
#include "ChildProgram.h"

namespace {

int requests = 0;

LRESULT CALLBACK CountKeystrokes(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CHAR && wParam == 'X') {
        ++requests;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow(CountKeystrokes);
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    vqrx::test::PumpMessages();
    return requests;
}
