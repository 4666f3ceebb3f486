// Has one window and goes on after WM_QUIT. Argument: the event to signal when it is there.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::SignalReady(vqrx::test::Argument(argc, argv, 1));
    for (;;) {
        vqrx::test::PumpMessages();
    }
}
