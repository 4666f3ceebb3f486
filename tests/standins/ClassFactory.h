#pragma once

#include "Counted.h"

#include <functional>
#include <utility>

namespace vqrx::test {

/// Class factory that makes objects with a function, or refuses to make one.
class FunctionFactory : public Counted<IClassFactory> {
public:
    using Make = std::function<IUnknown*()>;
    /// @param make     returns an object with one reference, which the factory owns
    /// @param refusal  a failure here is the result of every CreateInstance
    explicit FunctionFactory(Make make, HRESULT refusal = S_OK)
        : make_(std::move(make))
        , refusal_(refusal)
    {
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override
    {
        *object = nullptr;
        if (FAILED(refusal_)) {
            return refusal_;
        }
        IUnknown* const made = make_();
        const HRESULT hr = made->QueryInterface(iid, object);
        made->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    Make make_;
    HRESULT refusal_;
};

/// Registers a factory for this process. Takes over one reference of the factory.
/// @return the cookie for CoRevokeClassObject
[[nodiscard]] inline DWORD RegisterInProcess(REFCLSID classId, IUnknown* factory)
{
    DWORD cookie = 0;
    CoRegisterClassObject(classId, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    factory->Release();
    return cookie;
}

} // namespace vqrx::test
