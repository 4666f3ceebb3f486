#include "ProxyRegistration.h"

#include "ChildProcess.h"

#include <stdexcept>
#include <string>

namespace vqrx::test {

ProxyRegistration::ProxyRegistration()
    : library_(LoadLibraryA(ProductProgram("DaemonMgrPS.dll").c_str()))
{
    if (library_ == nullptr) {
        throw std::runtime_error("cannot load DaemonMgrPS.dll: " + std::to_string(GetLastError()));
    }
    if (const HRESULT hr = Call("DllRegisterServer"); hr != S_OK) {
        FreeLibrary(library_);
        throw std::runtime_error("DaemonMgrPS.dll does not register: " + std::to_string(hr));
    }
}

ProxyRegistration::~ProxyRegistration()
{
    Call("DllUnregisterServer");
    FreeLibrary(library_);
}

HRESULT ProxyRegistration::Call(const char* function) const
{
    using Entry = HRESULT(STDAPICALLTYPE*)();
    // The cast through void* avoids a warning: the two function types are not related.
    void* const address = reinterpret_cast<void*>(GetProcAddress(library_, function));
    return address != nullptr ? reinterpret_cast<Entry>(address)() : E_NOTIMPL;
}

} // namespace vqrx::test
