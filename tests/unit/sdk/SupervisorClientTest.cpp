#include "daemon_manager/SupervisorClient.h"

#include "IDaemonMgrControl.h"
#include "ImportPatch.h"
#include "com/ComPtr.h"
#include "daemon_manager/ComApartment.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::Answerer;
using daemon_manager::ArgumentCheck;
using daemon_manager::ComApartment;
using daemon_manager::SupervisorClient;
using system::com::v1::ComPtr;

// A supervisor in this process, which counts its calls.
class CountingControl final : public IDaemonMgrControl {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IDaemonMgrControl;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Launch(BSTR, LPSAFEARRAY*, DWORD* id) override { return Call(id); }
    HRESULT STDMETHODCALLTYPE Stop(DWORD) override { return Call(); }
    HRESULT STDMETHODCALLTYPE Attach(DWORD, LPSAFEARRAY*, DWORD* id) override { return Call(id); }
    HRESULT STDMETHODCALLTYPE Detach(DWORD) override { return Call(); }
    HRESULT STDMETHODCALLTYPE Exit() override { return Call(); }

    int calls = 0;

private:
    HRESULT Call(DWORD* id = nullptr)
    {
        if (id != nullptr) {
            *id = 5;
        }
        ++calls;
        return S_OK;
    }
};

// Publishes an object under the supervisor's name until the destructor runs.
class Published {
public:
    explicit Published(IUnknown* object)
    {
        ComPtr<IMoniker> moniker;
        EXPECT_EQ(S_OK, GetRunningObjectTable(0, table_.Put()));
        EXPECT_EQ(S_OK, CreateItemMoniker(L"!", L"DaemonManager", moniker.Put()));
        EXPECT_EQ(S_OK, table_->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, object, moniker.Get(),
                                         &cookie_));
    }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    ~Published() { table_->Revoke(cookie_); }

private:
    ComPtr<IRunningObjectTable> table_;
    DWORD cookie_ = 0;
};

struct Blanket {
    IUnknown* proxy;
    DWORD authentication;
    DWORD authorization;
    OLECHAR* principal;
    DWORD level;
    DWORD impersonation;
    void* identity;
    DWORD capabilities;
};
std::vector<Blanket> blankets;
HRESULT blanketResult = S_OK;

HRESULT WINAPI NoteBlanket(IUnknown* proxy, DWORD authentication, DWORD authorization,
                           OLECHAR* principal, DWORD level, DWORD impersonation,
                           RPC_AUTH_IDENTITY_HANDLE identity, DWORD capabilities)
{
    blankets.push_back({proxy, authentication, authorization, principal, level, impersonation,
                        identity, capabilities});
    return blanketResult;
}

struct SupervisorClientTest : testing::Test {
    SupervisorClientTest()
    {
        blankets.clear();
        blanketResult = S_OK;
    }

    const ComApartment apartment;
    CountingControl control;
    const Published published{&control};
};

} // namespace

TEST_F(SupervisorClientTest, Calls_are_encrypted_and_the_caller_is_only_identified)
{
    const ImportPatch patch("CoSetProxyBlanket", NoteBlanket);
    const SupervisorClient client(Answerer::anybody);
    ASSERT_EQ(2U, blankets.size()); // of the object and of the interface
    for (const Blanket& blanket : blankets) {
        EXPECT_EQ(&control, blanket.proxy);
        EXPECT_EQ(0xFFFFFFFFU, blanket.authentication); // RPC_C_AUTHN_DEFAULT
        EXPECT_EQ(0xFFFFFFFFU, blanket.authorization);  // RPC_C_AUTHZ_DEFAULT
        EXPECT_EQ(COLE_DEFAULT_PRINCIPAL, blanket.principal);
        EXPECT_EQ(6U, blanket.level);         // RPC_C_AUTHN_LEVEL_PKT_PRIVACY
        EXPECT_EQ(2U, blanket.impersonation); // RPC_C_IMP_LEVEL_IDENTIFY
        EXPECT_EQ(nullptr, blanket.identity);
        EXPECT_EQ(0U, blanket.capabilities);
    }
}

TEST_F(SupervisorClientTest, A_connection_whose_calls_cannot_be_protected_is_refused)
{
    const ImportPatch patch("CoSetProxyBlanket", NoteBlanket);
    blanketResult = E_ACCESSDENIED;
    EXPECT_THROW(SupervisorClient{Answerer::anybody}, daemon_manager::SupervisorError);
    for (const HRESULT without :
         {E_NOINTERFACE, E_NOTIMPL}) { // an object without a proxy, and Wine
        blanketResult = without;
        EXPECT_NO_THROW(SupervisorClient{Answerer::anybody});
    }
}

TEST_F(SupervisorClientTest, Unsafe_arguments_are_refused_unless_they_are_sent_as_they_are)
{
    SupervisorClient client(Answerer::anybody);
    EXPECT_THROW(client.Launch(L"C:\\a.bat", {L"a&b"}), daemon_manager::UnsafeArgument);
    EXPECT_THROW(client.Launch(L"C:\\a\".exe"), daemon_manager::UnsafeArgument);
    EXPECT_THROW(client.Attach(12, {L"a\"b"}), daemon_manager::UnsafeArgument);
    EXPECT_EQ(0, control.calls);
    EXPECT_EQ(5U, client.Launch(L"C:\\a.bat", {L"a&b"}, ArgumentCheck::none).daemonId);
    EXPECT_EQ(5U, client.Attach(12, {L"a\"b"}, ArgumentCheck::none).daemonId);
    EXPECT_EQ(5U, client.Launch(L"C:\\a.exe", {L"a&b"}).daemonId);
    EXPECT_EQ(3, control.calls);
}

} // namespace vqrx::test
