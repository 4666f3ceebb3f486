#include "daemon_manager/SupervisorClient.h"

#include "ImportPatch.h"
#include "PublishedControl.h"
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
    PublishedControl control;
};

} // namespace

TEST_F(SupervisorClientTest, Calls_are_encrypted_and_the_caller_is_only_identified)
{
    const ImportPatch patch("CoSetProxyBlanket", NoteBlanket);
    const SupervisorClient client(Answerer::kAnybody);
    ASSERT_EQ(2U, blankets.size()); // of the object and of the interface
    for (const Blanket& blanket : blankets) {
        EXPECT_EQ(control.Object(), blanket.proxy);
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
    EXPECT_THROW(SupervisorClient{Answerer::kAnybody}, daemon_manager::SupervisorError);
    for (const HRESULT without :
         {E_NOINTERFACE, E_NOTIMPL}) { // an object without a proxy, and Wine
        blanketResult = without;
        EXPECT_NO_THROW(SupervisorClient{Answerer::kAnybody});
    }
}

TEST_F(SupervisorClientTest, Unsafe_arguments_are_refused_unless_they_are_sent_as_they_are)
{
    SupervisorClient client(Answerer::kAnybody);
    EXPECT_THROW(client.Launch(L"C:\\a.bat", {L"a&b"}), daemon_manager::UnsafeArgument);
    EXPECT_THROW(client.Launch(L"C:\\a\".exe"), daemon_manager::UnsafeArgument);
    EXPECT_THROW(client.Attach(12, {L"a\"b"}), daemon_manager::UnsafeArgument);
    EXPECT_EQ(0, control.Calls());
    EXPECT_EQ(5U, client.Launch(L"C:\\a.bat", {L"a&b"}, ArgumentCheck::kNone).daemonId);
    EXPECT_EQ(5U, client.Attach(12, {L"a\"b"}, ArgumentCheck::kNone).daemonId);
    EXPECT_EQ(5U, client.Launch(L"C:\\a.exe", {L"a&b"}).daemonId);
    EXPECT_EQ(3, control.Calls());
}

TEST_F(SupervisorClientTest, An_exit_whose_answer_is_lost_because_the_supervisor_has_ended_is_done)
{
    SupervisorClient client(Answerer::kAnybody);
    control.AnswerToExit(static_cast<HRESULT>(0x800706BE)); // RPC_S_CALL_FAILED
    EXPECT_NO_THROW(client.Exit());
    control.AnswerToExit(static_cast<HRESULT>(0x800706BA)); // RPC_S_SERVER_UNAVAILABLE: not called
    EXPECT_THROW(client.Exit(), daemon_manager::SupervisorError);
}

TEST_F(SupervisorClientTest, A_call_that_finds_the_supervisor_gone_says_that_none_is_running)
{
    SupervisorClient client(Answerer::kAnybody);
    for (const unsigned long gone :
         {0x800706BAUL, 0x800706BEUL, 0x800706BFUL, 0x80010007UL, 0x80010012UL, 0x80010108UL,
          0x800401FDUL}) { // see IsBroken() of the client library
        control.AnswerToAll(static_cast<HRESULT>(gone));
        EXPECT_THROW(client.Launch(L"C:\\a.exe"), daemon_manager::SupervisorNotRunning);
        EXPECT_THROW(client.Stop(5), daemon_manager::SupervisorNotRunning);
        EXPECT_THROW(client.Attach(12), daemon_manager::SupervisorNotRunning);
        EXPECT_THROW(client.Detach(5), daemon_manager::SupervisorNotRunning);
    }
    EXPECT_THROW(client.Exit(), daemon_manager::SupervisorNotRunning);
}

// The object was found just before the supervisor cut its clients off.
TEST_F(SupervisorClientTest, A_connection_that_breaks_while_it_is_made_says_that_none_is_running)
{
    for (const unsigned long gone : {0x80010108UL, 0x800706BAUL}) {
        control.AnswerToInterface(static_cast<HRESULT>(gone));
        EXPECT_THROW(SupervisorClient{Answerer::kAnybody}, daemon_manager::SupervisorNotRunning);
    }
}

TEST_F(SupervisorClientTest, An_interface_that_is_refused_is_no_supervisor_that_has_ended)
{
    control.AnswerToInterface(E_ACCESSDENIED);
    try {
        const SupervisorClient client(Answerer::kAnybody);
        FAIL();
    } catch (const daemon_manager::SupervisorNotRunning& error) {
        FAIL() << error.what();
    } catch (const daemon_manager::SupervisorError& error) {
        EXPECT_EQ(E_ACCESSDENIED, error.Result());
    }
}

// WMI and the firewall answer the supervisor with the same codes, and it passes them on.
TEST_F(SupervisorClientTest, A_supervisor_that_answers_is_running_whatever_code_a_call_returns)
{
    SupervisorClient client(Answerer::kAnybody);
    control.AnswerToExit(static_cast<HRESULT>(0x800706BA)); // RPC_S_SERVER_UNAVAILABLE
    try {
        client.Exit();
        FAIL();
    } catch (const daemon_manager::SupervisorNotRunning& error) {
        FAIL() << error.what();
    } catch (const daemon_manager::SupervisorError& error) {
        EXPECT_EQ(static_cast<long>(0x800706BA), error.Result());
    }
}

} // namespace vqrx::test
