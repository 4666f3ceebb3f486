#pragma once

#include "NullInterfaces.h"

#include <functional>
#include <utility>

namespace vqrx::test {

/// Makes objects by a function that returns one reference, or answers with a failure.
class FunctionFactory : public Counted<IClassFactory> {
public:
    using Make = std::function<IUnknown*()>;
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

/// Registers a factory for in-process use. @return the cookie for CoRevokeClassObject
inline DWORD RegisterInProcess(REFCLSID classId, IUnknown* factory)
{
    DWORD cookie = 0;
    CoRegisterClassObject(classId, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    factory->Release();
    return cookie;
}

} // namespace vqrx::test
