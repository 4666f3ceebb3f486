#include "wmi/ConnectWmi.h"

#include "com/UniqueBstr.h"
#include "exception_utils/COMException.h"

namespace vqrx::system::wmi::v1 {
namespace {

// CLSID_WbemLocator of wbemidl.h, spelt out because its import library is not linked.
constexpr CLSID kWbemLocator = {
    0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

} // namespace

HRESULT SetComSecurity() noexcept
{
    const HRESULT hr =
        CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                             RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    return hr == RPC_E_TOO_LATE ? S_OK : hr;
}

com::v1::ComPtr<IWbemLocator> MakeLocator()
{
    com::v1::ComPtr<IWbemLocator> locator;
    ThrowIfFailed(CoCreateInstance(kWbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                   __uuidof(IWbemLocator), locator.PutVoid()));
    return locator;
}

com::v1::ComPtr<IWbemServices> OpenNamespace(IWbemLocator* locator)
{
    const com::v1::UniqueBstr name(L"root\\cimv2");
    com::v1::ComPtr<IWbemServices> services;
    ThrowIfFailed(locator->ConnectServer(name.Get(), nullptr, nullptr, nullptr,
                                         WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr,
                                         services.Put()));
    return services;
}

void SetCallSecurity(IWbemServices* services)
{
    ThrowIfFailed(CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                    RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                                    EOAC_NONE));
}

} // namespace vqrx::system::wmi::v1
