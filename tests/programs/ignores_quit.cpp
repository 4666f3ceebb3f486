// Child program with one window that ignores WM_QUIT. Argument: the event that it signals when the
// window exists.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    for (;;) {
        vqrx::test::PumpMessages();
    }
}
