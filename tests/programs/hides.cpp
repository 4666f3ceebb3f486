// Child program that lets no other process open it with any right that shows what it runs. Prints
// "hidden" when it has done so, and runs until it is ended.
#include <windows.h>

#include <aclapi.h>

#include <cstdio>

int main()
{
    ACL nobody{};
    if (InitializeAcl(&nobody, sizeof nobody, ACL_REVISION) == FALSE ||
        SetSecurityInfo(GetCurrentProcess(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                        nullptr, &nobody, nullptr) != ERROR_SUCCESS) {
        return 1;
    }
    std::puts("hidden");
    std::fflush(stdout);
    Sleep(INFINITE);
}
