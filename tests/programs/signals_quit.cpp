// Child program with one window. Arguments: three events. It signals the first event when the
// window exists, and the second one on WM_QUIT. It ends when the test signals the third one.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    using namespace vqrx::test; // NOLINT(google-build-using-namespace): a program of one function
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
