// COM of the fake machine: apartments and proxies have no effect, and four classes exist.
#include "FakeServers.h"

#include <atomic>

std::uint32_t NextInterfaceNumber()
{
    static std::atomic<std::uint32_t> last = 0;
    return ++last;
}

HRESULT CoInitializeEx(void*, DWORD)
{
    return S_OK;
}

void CoUninitialize() {}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown*, DWORD, REFIID, void** object)
{
    // The first part of each class id, as in the headers of Windows.
    switch (classId.Data1) {
    case 0x4590F811: // WbemLocator
        *object = fake_windows::MakeWmiLocator();
        return S_OK;
    case 0x304CE942: // NetFwMgr
        *object = fake_windows::MakeFirewallManager();
        return S_OK;
    case 0xE2B3C97F: // NetFwPolicy2
        *object = fake_windows::MakeFirewallPolicy();
        return S_OK;
    case 0x2C5BC43E: // NetFwRule
        *object = fake_windows::MakeFirewallRule();
        return S_OK;
    default:
        *object = nullptr;
        return E_NOINTERFACE;
    }
}

HRESULT CoInitializeSecurity(void*, LONG, void*, void*, DWORD, DWORD, void*, DWORD, void*)
{
    return S_OK;
}

HRESULT CoSetProxyBlanket(IUnknown*, DWORD, DWORD, OLECHAR*, DWORD, DWORD, void*, DWORD)
{
    return S_OK;
}
