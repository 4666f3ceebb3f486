#pragma once

#include <unknwn.h>

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD RPC_C_AUTHN_LEVEL_CONNECT = 2;
inline constexpr DWORD RPC_C_AUTHN_LEVEL_CALL = 3;
inline constexpr DWORD RPC_C_IMP_LEVEL_IMPERSONATE = 3;
inline constexpr DWORD RPC_C_AUTHN_WINNT = 10;
inline constexpr DWORD RPC_C_AUTHZ_NONE = 0;
inline constexpr DWORD EOAC_NONE = 0;
inline constexpr HRESULT RPC_E_TOO_LATE = static_cast<HRESULT>(0x80010119);

HRESULT CoInitializeEx(void* reserved, DWORD model);
void CoUninitialize();
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID riid,
                         void** object);
HRESULT CoInitializeSecurity(void* descriptor, LONG count, void* services, void* reserved,
                             DWORD authentication, DWORD impersonation, void* list,
                             DWORD capabilities, void* reserved3);
HRESULT CoSetProxyBlanket(IUnknown* proxy, DWORD authentication, DWORD authorisation,
                          OLECHAR* principal, DWORD level, DWORD impersonation, void* identity,
                          DWORD capabilities);
