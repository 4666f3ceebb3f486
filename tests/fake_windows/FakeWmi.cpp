// WMI of the fake machine. Every query finds one process: attached.exe with two arguments.
#include "FakeServers.h"

#include "Counted.h"

#include <cwchar>

namespace fake_windows {
namespace {

using vqrx::test::Counted;

class ProcessObject final : public Counted<IWbemClassObject> {
public:
    HRESULT Get(LPCWSTR name, LONG, VARIANT* value, CIMTYPE*, LONG*) override
    {
        value->vt = VT_BSTR;
        value->bstrVal = SysAllocString(std::wcscmp(name, L"ExecutablePath") == 0
                                            ? L"attached.exe"
                                            : L"attached.exe first second");
        return S_OK;
    }
};

class Found final : public Counted<IEnumWbemClassObject> {
public:
    HRESULT Next(LONG, ULONG, IWbemClassObject** objects, ULONG* returned) override
    {
        *returned = given_ ? 0 : 1;
        *objects = given_ ? nullptr : new ProcessObject;
        given_ = true;
        return *returned == 1 ? S_OK : S_FALSE;
    }

private:
    bool given_ = false;
};

class Services final : public Counted<IWbemServices> {
public:
    HRESULT ExecQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject** found) override
    {
        *found = new Found;
        return S_OK;
    }
};

class Locator final : public Counted<IWbemLocator> {
public:
    HRESULT ConnectServer(BSTR, BSTR, BSTR, BSTR, LONG, BSTR, IWbemContext*,
                          IWbemServices** services) override
    {
        *services = new Services;
        return S_OK;
    }
};

} // namespace

IWbemLocator* MakeWmiLocator()
{
    return new Locator;
}

} // namespace fake_windows
