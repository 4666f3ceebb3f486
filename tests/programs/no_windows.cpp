// Child program without a window that runs until it is ended. Argument: the event that it signals
// when it runs.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    Sleep(INFINITE);
}
