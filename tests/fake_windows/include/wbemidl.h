#pragma once

#include <oleauto.h>

using CIMTYPE = LONG;
inline constexpr LONG WBEM_INFINITE = -1;
inline constexpr LONG WBEM_FLAG_CONNECT_USE_MAX_WAIT = 0x80;
struct IWbemContext;

struct IWbemClassObject : IUnknown {
    virtual HRESULT Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavour) = 0;
};
struct IEnumWbemClassObject : IUnknown {
    virtual HRESULT Next(LONG timeout, ULONG count, IWbemClassObject** objects,
                         ULONG* returned) = 0;
};
struct IWbemServices : IUnknown {
    virtual HRESULT ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                              IEnumWbemClassObject** found) = 0;
};
struct IWbemLocator : IUnknown {
    virtual HRESULT ConnectServer(BSTR resource, BSTR user, BSTR password, BSTR locale, LONG flags,
                                  BSTR authority, IWbemContext* context,
                                  IWbemServices** services) = 0;
};
