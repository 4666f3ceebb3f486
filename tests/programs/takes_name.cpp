// Publishes an object of its own under the supervisor's name, as soon as the name is free: a
// program that wants to be taken for the supervisor. Writes "taken" then, and runs until it is
// ended.
#include <windows.h>

#include <objbase.h>

#include <iostream>

namespace {

class Impostor final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        *object = id == IID_IUnknown ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

} // namespace

int main()
{
    IRunningObjectTable* table = nullptr;
    IMoniker* moniker = nullptr;
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) ||
        FAILED(GetRunningObjectTable(0, &table)) ||
        FAILED(CreateItemMoniker(L"!", L"DaemonManager", &moniker))) {
        return 1;
    }
    std::cout << "waits" << std::endl;
    Impostor impostor;
    DWORD cookie = 0;
    // The table tells nobody that a name is free.
    while (table->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, &impostor, moniker, &cookie) != S_OK) {
        table->Revoke(cookie);
        Sleep(1);
    }
    std::cout << "taken" << std::endl;
    Sleep(INFINITE);
}
