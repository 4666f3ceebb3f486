// Has one window and needs five seconds to end after WM_QUIT. Argument: the event to signal when
// the window is there.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    vqrx::test::PumpMessages();
    Sleep(5000);
    return 0;
}
