#include "ProxyRegistration.h"

#include "ChildProcess.h"

#include <stdexcept>
#include <string>

namespace vqrx::test {

ProxyRegistration::ProxyRegistration()
    : library_(LoadLibraryA(ProductProgram("DaemonMgrPS.dll").c_str()))
{
    if (library_ == nullptr) {
        throw std::runtime_error("DaemonMgrPS.dll: " + std::to_string(GetLastError()));
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
    // By way of void*, since the two function types have nothing to do with each other.
    void* const address = reinterpret_cast<void*>(GetProcAddress(library_, function));
    return address != nullptr ? reinterpret_cast<Entry>(address)() : E_NOTIMPL;
}

} // namespace vqrx::test
