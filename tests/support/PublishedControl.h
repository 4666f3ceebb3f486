#pragma once

#include "IDaemonMgrControl.h"
#include "com/ComPtr.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <utility>

namespace vqrx::test {

/// An object of this process, published under the supervisor's name until the destructor runs. It
/// answers every call of the supervisor's interface, and counts the calls. The answer is success
/// unless a test sets another one. Needs COM.
/// The constructor waits until the name is free, for at most a minute: the table removes the entry
/// of a killed process some time after the process has ended, and tells nobody.
class PublishedControl {
public:
    /// @param onAttach  called in each Attach with the daemon id of the answer; empty: nothing more
    ///                  is done
    explicit PublishedControl(std::function<void(DWORD daemonId)> onAttach = {})
        : control_(std::move(onAttach))
    {
        system::com::v1::ComPtr<IMoniker> moniker;
        EXPECT_EQ(S_OK, GetRunningObjectTable(0, table_.Put()));
        EXPECT_EQ(S_OK, CreateItemMoniker(L"!", L"DaemonManager", moniker.Put()));
        HRESULT registered = Register(moniker.Get());
        for (int tries = 0; registered == MK_S_MONIKERALREADYREGISTERED && tries < 6000; ++tries) {
            table_->Revoke(cookie_);
            Sleep(10);
            registered = Register(moniker.Get());
        }
        EXPECT_EQ(S_OK, registered);
    }
    PublishedControl(const PublishedControl&) = delete;
    PublishedControl& operator=(const PublishedControl&) = delete;
    ~PublishedControl() { table_->Revoke(cookie_); }

    /// How often a method of the interface was called.
    [[nodiscard]] int Calls() const { return control_.calls; }

    /// Sets what the object answers to Exit from now on.
    void AnswerToExit(HRESULT answer) { control_.answerToExit = answer; }

    /// Sets what the object answers to every method from now on.
    void AnswerToAll(HRESULT answer)
    {
        control_.answer = answer;
        control_.answerToExit = answer;
    }

    /// Sets what the object answers from now on if it is asked for the supervisor's interface.
    void AnswerToInterface(HRESULT answer) { control_.answerToInterface = answer; }

    /// The object as clients in this apartment see it. Valid as long as this object.
    [[nodiscard]] IUnknown* Object() { return &control_; }

private:
    class Control final : public IDaemonMgrControl {
    public:
        explicit Control(std::function<void(DWORD daemonId)> onAttach)
            : onAttach_(std::move(onAttach))
        {
        }
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
        {
            const HRESULT result = id == IID_IUnknown            ? S_OK
                                   : id == IID_IDaemonMgrControl ? answerToInterface.load()
                                                                 : E_NOINTERFACE;
            *object = result == S_OK ? this : nullptr;
            return result;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE Launch(BSTR, LPSAFEARRAY*, DWORD* id) override
        {
            return Call(id);
        }
        HRESULT STDMETHODCALLTYPE Stop(DWORD) override { return Call(); }
        HRESULT STDMETHODCALLTYPE Attach(DWORD, LPSAFEARRAY*, DWORD* id) override
        {
            const HRESULT result = Call(id);
            if (onAttach_) {
                onAttach_(*id);
            }
            return result;
        }
        HRESULT STDMETHODCALLTYPE Detach(DWORD) override { return Call(); }
        HRESULT STDMETHODCALLTYPE Exit() override
        {
            Call();
            return answerToExit;
        }

        std::atomic<int> calls = 0;
        std::atomic<HRESULT> answer = S_OK; // to every method but Exit
        std::atomic<HRESULT> answerToExit = S_OK;
        std::atomic<HRESULT> answerToInterface = S_OK;

    private:
        HRESULT Call(DWORD* id = nullptr)
        {
            if (id != nullptr) {
                *id = 5;
            }
            ++calls;
            return answer;
        }

        std::function<void(DWORD daemonId)> onAttach_;
    };

    HRESULT Register(IMoniker* moniker)
    {
        return table_->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, &control_, moniker, &cookie_);
    }

    Control control_;
    system::com::v1::ComPtr<IRunningObjectTable> table_;
    DWORD cookie_ = 0;
};

} // namespace vqrx::test
