// Strings, variants and arrays of OLE Automation.
#include <oleauto.h>

#include <cstdlib>
#include <cwchar>

// A string lies in memory directly after its length.
BSTR SysAllocStringLen(const OLECHAR* text, UINT length)
{
    auto* const memory = static_cast<std::size_t*>(
        std::malloc(sizeof(std::size_t) + (length + 1U) * sizeof(OLECHAR)));
    *memory = length;
    auto* const result = reinterpret_cast<BSTR>(memory + 1);
    std::wmemcpy(result, text, length);
    result[length] = L'\0';
    return result;
}

BSTR SysAllocString(const OLECHAR* text)
{
    return text != nullptr ? SysAllocStringLen(text, static_cast<UINT>(std::wcslen(text)))
                           : nullptr;
}

UINT SysStringLen(BSTR text)
{
    return text != nullptr ? static_cast<UINT>(*(reinterpret_cast<std::size_t*>(text) - 1)) : 0;
}

void SysFreeString(BSTR text)
{
    if (text != nullptr) {
        std::free(reinterpret_cast<std::size_t*>(text) - 1);
    }
}

void VariantInit(VARIANT* value)
{
    *value = {VT_EMPTY, nullptr};
}

HRESULT VariantClear(VARIANT* value)
{
    if (value->vt == VT_BSTR) {
        SysFreeString(value->bstrVal);
    }
    VariantInit(value);
    return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY*)
{
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY*)
{
    return S_OK;
}

HRESULT SafeArrayDestroy(SAFEARRAY*)
{
    return S_OK; // The test owns the array.
}

HRESULT SafeArrayGetVartype(SAFEARRAY*, VARTYPE* type)
{
    *type = VT_BSTR;
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY*)
{
    return 1;
}

HRESULT SafeArrayGetLBound(SAFEARRAY*, UINT, LONG* bound)
{
    *bound = 0;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT, LONG* bound)
{
    *bound = array->count - 1;
    return S_OK;
}
