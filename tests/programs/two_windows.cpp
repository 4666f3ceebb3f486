// Child program with two windows on one thread. It ignores the first WM_QUIT and ends on the second
// one. Argument: the event that it signals when both windows exist.
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
