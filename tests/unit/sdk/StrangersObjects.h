#pragma once

#include "ObjectOrigin.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <cstdint>

namespace vqrx::test {

/// An object that answers only for the interfaces that a test gives it.
class ObjectWithout : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        *object = IsEqualIID(id, IID_IUnknown) ? this : Find(id);
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

protected:
    virtual void* Find(REFIID /*id*/) { return nullptr; }
};

/// A proxy that says where its object is.
class ProxyElsewhere final : public ObjectWithout {
public:
    ULONG_PTR locality = SERVER_LOCALITY_REMOTE;
    HRESULT answer = S_OK;

private:
    class Options final : public IRpcOptions {
    public:
        explicit Options(ProxyElsewhere& proxy)
            : proxy_(proxy)
        {
        }
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
        {
            return proxy_.QueryInterface(id, object);
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE Set(IUnknown*, RPCOPT_PROPERTIES, ULONG_PTR) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE Query(IUnknown* asked, RPCOPT_PROPERTIES property,
                                        ULONG_PTR* value) override
        {
            EXPECT_EQ(&proxy_, asked);
            EXPECT_EQ(2, property); // COMBND_SERVER_LOCALITY
            *value = proxy_.locality;
            return proxy_.answer;
        }

    private:
        ProxyElsewhere& proxy_;
    };

    void* Find(REFIID id) override
    {
        return IsEqualIID(id, __uuidof(IRpcOptions)) ? &options_ : nullptr;
    }

    Options options_{*this};
};

/// An object that writes its marshalled form itself: the exporter id of this process, eight times.
class Forger final : public ObjectWithout {
private:
    class Form final : public IMarshal {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD,
                                                    CLSID* id) override
        {
            *id = CLSID_NULL;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD,
                                                    DWORD* size) override
        {
            *size = 64;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE MarshalInterface(IStream* stream, REFIID, void*, DWORD, void*,
                                                   DWORD) override
        {
            ObjectWithout plain;
            std::uint64_t exporterId = 0;
            EXPECT_EQ(S_OK, daemon_manager::ReadExporterId(&plain, exporterId));
            for (int times = 0; times < 8; ++times) {
                stream->Write(&exporterId, sizeof exporterId, nullptr);
            }
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE UnmarshalInterface(IStream*, REFIID, void**) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE ReleaseMarshalData(IStream*) override { return S_OK; }
        HRESULT STDMETHODCALLTYPE DisconnectObject(DWORD) override { return S_OK; }
    };

    void* Find(REFIID id) override { return IsEqualIID(id, IID_IMarshal) ? &form_ : nullptr; }

    Form form_;
};

} // namespace vqrx::test
