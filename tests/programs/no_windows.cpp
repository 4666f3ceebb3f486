// Runs for ever without a window. Argument: the event to signal when it runs.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    Sleep(INFINITE);
}
