#pragma once

#include "com/ComPtr.h"

#include <windows.h>

#include <objbase.h>

namespace vqrx::test {

/// Returns the object that is published as "DaemonManager"; empty if none is. Needs COM.
[[nodiscard]] inline system::com::v1::ComPtr<IUnknown> FindPublished()
{
    system::com::v1::ComPtr<IRunningObjectTable> table;
    system::com::v1::ComPtr<IMoniker> name;
    system::com::v1::ComPtr<IUnknown> object;
    if (FAILED(GetRunningObjectTable(0, table.Put())) ||
        FAILED(CreateItemMoniker(L"!", L"DaemonManager", name.Put())) ||
        FAILED(table->GetObject(name.Get(), object.Put()))) {
        return {};
    }
    return object;
}

} // namespace vqrx::test
