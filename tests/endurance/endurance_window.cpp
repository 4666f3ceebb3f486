// A daemon with a window that quits when it is asked to, after a moment. Arguments: its kind (not
// looked at), its name.
#include "endurance_daemon.h"

int main(int argc, char** argv)
{
    vqrx::test::MakeWindow();
    vqrx::test::HoldName(vqrx::test::Argument(argc, argv, 2));
    vqrx::test::PumpMessages();
    Sleep(300);
    return 0;
}
