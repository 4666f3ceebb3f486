// Daemon program without a window. Arguments: its kind, its name.
//   steady  runs until it is ended
//   brief   ends after a second with exit code 7
//   none    ends immediately with exit code 3
// The program keeps a mutex with its name, so that a second process with this name reports itself.
#include "endurance_daemon.h"

int main(int argc, char** argv)
{
    const std::string kind = vqrx::test::Argument(argc, argv, 1);
    if (kind == "none") {
        return 3;
    }
    vqrx::test::HoldName(vqrx::test::Argument(argc, argv, 2));
    if (kind == "brief") {
        Sleep(1000);
        return 7;
    }
    Sleep(INFINITE);
}
