#pragma once

#include "com/ComPtr.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>

namespace vqrx::test {

/// The object published as "DaemonManager"; empty when there is none.
inline system::com::v1::ComPtr<IUnknown> FindPublished()
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

/// An object without a purpose; its owner is the scope, which sees who still holds it.
class PlainObject : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = IsEqualIID(iid, IID_IUnknown) ? this : nullptr;
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }

    ULONG References() const { return references_; }

private:
    std::atomic<ULONG> references_ = 1;
};

} // namespace vqrx::test
