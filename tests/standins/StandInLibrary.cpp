// Library with the stand-ins of WMI and of the firewall. Tests register it in the Wine prefix under
// the class ids of WMI and of the firewall, so that every process of the prefix uses it, and remove
// the registration again.
#include "StandInFirewall.h"
#include "StandInWmi.h"

#include <objbase.h>

namespace {

// Returns the result of queries that a test wrote to the registry; S_OK if the test wrote none.
HRESULT QueryResult()
{
    DWORD result = 0;
    DWORD size = sizeof result;
    RegGetValueW(HKEY_CURRENT_USER, vqrx::test::kWmiAnswersKey, L"ExecQuery", RRF_RT_REG_DWORD,
                 nullptr, &result, &size);
    return static_cast<HRESULT>(result);
}

} // namespace

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID iid, void** object)
{
    constexpr CLSID wbemLocator = {
        0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};
    *object = nullptr;
    const bool isWmi = IsEqualCLSID(classId, wbemLocator) != FALSE;
    if (isWmi) {
        vqrx::test::TheWmiScript().query = QueryResult();
    }
    IUnknown* const factory =
        isWmi ? vqrx::test::MakeWmiLocatorFactory() : vqrx::test::MakeFirewallFactory(classId);
    if (factory == nullptr) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    const HRESULT hr = factory->QueryInterface(iid, object);
    factory->Release();
    return hr;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow()
{
    return S_FALSE;
}
