#pragma once

#include "FindPublished.h"

#include <windows.h>

#include <atomic>

namespace vqrx::test {

/// An object with no other interface than IUnknown. It lives on the stack: its reference count
/// never deletes it, and shows how many references are held.
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
