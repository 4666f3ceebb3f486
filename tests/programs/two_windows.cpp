// Has two windows on one thread and ends on the second WM_QUIT; on the first alone it goes on.
// Argument: the event to signal when both windows are there.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::MakeWindow();
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    vqrx::test::PumpMessages();
    vqrx::test::PumpMessages();
    return 0;
}
