// A daemon without a window. Arguments: its kind, its name.
//   steady  runs for ever        brief  ends after a second with exit code 7
//   none    ends at once with exit code 3
// While it runs it holds a mutex of its name; the second process of one name says so.
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
