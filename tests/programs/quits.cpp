// Has one window and ends on WM_QUIT. Argument: the event to signal when the window is there.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    vqrx::test::PumpMessages();
    return 0;
}
