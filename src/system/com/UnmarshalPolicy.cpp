#include "com/UnmarshalPolicy.h"

#include "com/ComPtr.h"
#include "system_library/SystemLibrary.h"

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

namespace vqrx::system::com::v1 {
namespace {

// {0000034B-0000-0000-C000-000000000046}, CLSID_GlobalOptions
constexpr CLSID kGlobalOptions{0x0000034B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// {4590F812-1D3A-11D0-891F-00AA004B2E24}, which [MS-WMI] 2.2.4 names as the class that rebuilds an
// IWbemClassObject.
constexpr CLSID kWmiObject{
    0x4590F812, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

} // namespace

HRESULT RequireTrustedUnmarshalers() noexcept
{
    ComPtr<IGlobalOptions> options;
    HRESULT hr = CoCreateInstance(kGlobalOptions, nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(IGlobalOptions), options.PutVoid());
    if (SUCCEEDED(hr)) {
        hr = options->Set(COMGLB_UNMARSHALING_POLICY, COMGLB_UNMARSHALING_POLICY_STRONG);
    }
    const bool isUnknown = hr == REGDB_E_CLASSNOTREG || hr == E_NOINTERFACE || hr == E_INVALIDARG;
    return isUnknown ? S_FALSE : hr;
}

void PermitUnmarshalerOfWmi() noexcept
{
    using Allow = HRESULT WINAPI(REFCLSID);
    using cpp_utils::system_library::v1::FindFunction;
    if (auto* const allow =
            FindFunction<Allow>(GetModuleHandleW(L"ole32.dll"), "CoAllowUnmarshalerCLSID")) {
        allow(kWmiObject);
    }
}

} // namespace vqrx::system::com::v1
