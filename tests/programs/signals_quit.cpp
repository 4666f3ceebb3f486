// Has one window; on WM_QUIT it signals a second event and ends when a third one is signalled.
// Arguments: the events, the first of which says that the window is there.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    using namespace vqrx::test; // NOLINT(google-build-using-namespace): this is its program
    MakeWindow();
    SignalReady(Argument(argc, argv, 1));
    PumpMessages();
    SignalReady(Argument(argc, argv, 2));
    if (const HANDLE mayEnd = OpenEventA(SYNCHRONIZE, FALSE, Argument(argc, argv, 3).c_str())) {
        WaitForSingleObject(mayEnd, INFINITE);
        CloseHandle(mayEnd);
    }
    return 0;
}
