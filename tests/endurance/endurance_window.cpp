// Daemon program with a window. It ends 300 ms after WM_QUIT. Arguments: its kind (ignored), its
// name.
#include "endurance_daemon.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::HoldName(vqrx::test::Argument(argc, argv, 2));
    vqrx::test::PumpMessages();
    Sleep(300);
    return 0;
}
