#pragma once

// The part of COM that the product calls. ../ComRuntime.cpp defines the functions.
#include <windows.h>

#include <cstring>

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const GUID&;
using REFCLSID = const GUID&;

inline bool IsEqualIID(REFIID left, REFIID right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

/// Returns 1, 2, 3, ... Any thread may call.
[[nodiscard]] std::uint32_t NextInterfaceNumber();

/// Id of an interface. Each interface gets a different number when the program starts.
template <typename Interface>
inline const IID kInterfaceId{NextInterfaceNumber(), 0, 0, {}};
#define __uuidof(Interface) kInterfaceId<Interface>

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};
#define IID_IUnknown kInterfaceId<IUnknown>
