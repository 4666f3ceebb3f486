#pragma once

#include <windows.h>

#include <objidl.h>

#include <functional>
#include <vector>

namespace vqrx::test {

/// A Running Object Table that gives one result to every registration and keeps what it was given.
class AnsweringTable : public IRunningObjectTable {
public:
    explicit AnsweringTable(HRESULT answer)
        : answer_(answer)
    {
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE Register(DWORD flags, IUnknown*, IMoniker*, DWORD* cookie) override
    {
        if (onRegister) {
            onRegister();
        }
        registeredFlags = flags;
        *cookie = 4711;
        return answer_;
    }
    HRESULT STDMETHODCALLTYPE Revoke(DWORD cookie) override
    {
        revoked.push_back(cookie);
        return E_FAIL; // the result is ignored
    }
    HRESULT STDMETHODCALLTYPE IsRunning(IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetObject(IMoniker*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NoteChangeTime(DWORD, FILETIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IMoniker*, FILETIME*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnumRunning(IEnumMoniker**) override { return E_NOTIMPL; }

    ULONG references = 0;
    DWORD registeredFlags = 0;
    std::function<void()> onRegister;
    std::vector<DWORD> revoked;

private:
    HRESULT answer_;
};

/// The table that GiveAnsweringTable gives.
inline AnsweringTable* answeringTable = nullptr;

/// Replaces GetRunningObjectTable.
inline HRESULT WINAPI GiveAnsweringTable(DWORD, IRunningObjectTable** table)
{
    answeringTable->AddRef();
    *table = answeringTable;
    return S_OK;
}

} // namespace vqrx::test
