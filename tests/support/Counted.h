#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace vqrx::test {

/// Base of a COM object with one interface, for COM on Windows and for the fake. Implements the
/// reference count and QueryInterface. A new object has one reference, which its maker owns. The
/// last Release deletes the object.
template <typename Interface>
class Counted : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (IsEqualIID(iid, __uuidof(IUnknown)) || IsEqualIID(iid, __uuidof(Interface))) {
            *object = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG remaining = --references_;
        if (remaining == 0) {
            delete this;
        }
        return remaining;
    }

protected:
    virtual ~Counted() = default;

private:
    std::atomic<ULONG> references_ = 1;
};

} // namespace vqrx::test
