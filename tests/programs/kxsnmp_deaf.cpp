// Named like the SNMP agent; takes no notice of keystrokes, but ends on WM_QUIT. Its exit code is
// the number of X keystrokes it got. Argument: the event to signal when the window is there.
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
