// Child program that ends by an access violation.
#include <windows.h>

int main()
{
    SetErrorMode(SEM_NOGPFAULTERRORBOX | SEM_FAILCRITICALERRORS);
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
    return 0;
}
