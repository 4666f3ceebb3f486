#include "wmi/WmiQuery.h"

#include "com/UniqueVariant.h"
#include "exception_utils/COMException.h"

namespace vqrx::system::wmi::v1 {
namespace {

using com::v1::ComPtr;
using com::v1::UniqueBstr;
using com::v1::UniqueVariant;

UniqueBstr CopyText(const OLECHAR* text)
{
    UniqueBstr copy = UniqueBstr::Adopt(SysAllocString(text));
    if (copy.Get() == nullptr && text != nullptr) {
        throw COMException(E_OUTOFMEMORY);
    }
    return copy;
}

} // namespace

UniqueBstr ReadStringProperty(IWbemClassObject* object, const wchar_t* name)
{
    UniqueVariant value;
    CIMTYPE type = 0;
    ThrowIfFailed(object->Get(name, 0, value.Put(), &type, nullptr));
    switch (value.Get().vt) {
    case VT_NULL:
        return CopyText(L"");
    case VT_BSTR:
        return CopyText(value.Get().bstrVal);
    default:
        throw COMException(E_FAIL);
    }
}

std::vector<ComPtr<IWbemClassObject>> ExecuteQuery(IWbemServices* services,
                                                   const std::wstring& query)
{
    const UniqueBstr language(L"WQL");
    const UniqueBstr text(query);
    ComPtr<IEnumWbemClassObject> enumerator;
    ThrowIfFailed(services->ExecQuery(language.Get(), text.Get(), 0, nullptr, enumerator.Put()));
    std::vector<ComPtr<IWbemClassObject>> objects;
    for (;;) {
        ComPtr<IWbemClassObject> object;
        ULONG returned = 0;
        ThrowIfFailed(
            enumerator->Next(static_cast<LONG>(WBEM_INFINITE), 1, object.Put(), &returned));
        if (returned == 0 || !object) {
            return objects;
        }
        objects.push_back(std::move(object));
    }
}

ComPtr<IWbemClassObject> FindProcess(IWbemServices* services, DWORD processId)
{
    const auto found = ExecuteQuery(services, L"SELECT * FROM Win32_Process WHERE ProcessId=" +
                                                  std::to_wstring(processId));
    return found.empty() ? ComPtr<IWbemClassObject>() : found.front();
}

} // namespace vqrx::system::wmi::v1
