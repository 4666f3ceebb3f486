#pragma once

#include <objbase.h>

using BSTR = OLECHAR*;
using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_BSTR = 8;

struct VARIANT {
    VARTYPE vt;
    BSTR bstrVal;
};
/// An array with one dimension, whose elements are BSTR.
struct SAFEARRAY {
    void* pvData;
    LONG count;
};
using LPSAFEARRAY = SAFEARRAY*;

BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
UINT SysStringLen(BSTR text);
void SysFreeString(BSTR text);
void VariantInit(VARIANT* value);
HRESULT VariantClear(VARIANT* value);
HRESULT SafeArrayLock(SAFEARRAY* array);
HRESULT SafeArrayUnlock(SAFEARRAY* array);
HRESULT SafeArrayDestroy(SAFEARRAY* array);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
UINT SafeArrayGetDim(SAFEARRAY* array);
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
