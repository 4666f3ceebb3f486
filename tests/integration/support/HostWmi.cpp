#include "HostWmi.h"

#include "WbemLocator.h"

#include "ChildProcess.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "com/UniqueVariant.h"

#include <wbemidl.h>

#include <string>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::com::v1::UniqueVariant;

bool HasText(IWbemClassObject* object, const wchar_t* property)
{
    UniqueVariant value;
    return SUCCEEDED(object->Get(property, 0, value.Put(), nullptr, nullptr)) &&
           value.Get().vt == VT_BSTR && SysStringLen(value.Get().bstrVal) != 0;
}

// Wine 10 knows the command line of the process that asks, and of no other one.
bool AskForAnotherProcess()
{
    const system::com::v1::ComApartment apartment;
    const ChildProcess other("\"" + TestProgram("no_windows") + "\"");
    ComPtr<IWbemLocator> locator;
    ComPtr<IWbemServices> services;
    ComPtr<IEnumWbemClassObject> found;
    ComPtr<IWbemClassObject> process;
    const UniqueBstr name(L"root\\cimv2");
    const UniqueBstr language(L"WQL");
    const UniqueBstr query(L"SELECT * FROM Win32_Process WHERE ProcessId=" +
                           std::to_wstring(other.Pid()));
    ULONG returned = 0;
    return SUCCEEDED(CoCreateInstance(kWbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                      __uuidof(IWbemLocator), locator.PutVoid())) &&
           SUCCEEDED(locator->ConnectServer(name.Get(), nullptr, nullptr, nullptr, 0, nullptr,
                                            nullptr, services.Put())) &&
           SUCCEEDED(CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                       RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                                       EOAC_NONE)) &&
           SUCCEEDED(services->ExecQuery(language.Get(), query.Get(), 0, nullptr, found.Put())) &&
           SUCCEEDED(found->Next(static_cast<LONG>(WBEM_INFINITE), 1, process.Put(), &returned)) &&
           process && HasText(process.Get(), L"ExecutablePath") &&
           HasText(process.Get(), L"CommandLine");
}

} // namespace

bool HostWmiIsComplete()
{
    static const bool complete = AskForAnotherProcess();
    return complete;
}

} // namespace vqrx::test
