// Client program that calls the supervisor without a pause until an event is signalled, and then
// prints the number of its calls. Arguments: the event that it signals before the first call, the
// event that ends it. Exit code 1: a call returned a wrong result.
#include "SupervisorProcess.h"
#include "com/UniqueBstr.h"

#include <windows.h>

#include <oleauto.h>

#include <iostream>

int main(int argc, char** argv)
{
    using namespace vqrx::test;
    if (argc != 3) {
        return 2;
    }
    const vqrx::system::win32::v1::UniqueKernelHandle ready(
        OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[1]));
    const vqrx::system::win32::v1::UniqueKernelHandle end(OpenEventA(SYNCHRONIZE, FALSE, argv[2]));
    const vqrx::system::com::v1::ComApartment apartment;
    const auto control = FindPublished().Query<IDaemonMgrControl>();
    // The test has launched this program already.
    const vqrx::system::com::v1::UniqueBstr path(L"C:\\missing.exe");
    unsigned long calls = 0;
    SetEvent(ready.Get());
    while (WaitForSingleObject(end.Get(), 0) == WAIT_TIMEOUT) {
        SAFEARRAY* numbers = SafeArrayCreateVector(VT_I4, 0, 3);
        DWORD id = 0;
        if (control->Launch(path.Get(), nullptr, &id) != S_FALSE ||
            control->Launch(path.Get(), &numbers, &id) != E_INVALIDARG ||
            control->Stop(0xFFFFFFF0) != S_FALSE || control->Detach(id) != S_FALSE) {
            return 1;
        }
        SafeArrayDestroy(numbers);
        calls += 4;
    }
    std::cout << calls << std::flush;
    return 0;
}
