#include "wmi/ConnectWmi.h"

#include "ImportPatch.h"
#include "StandInWmi.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace vqrx::test {
namespace {

using namespace system::wmi::v1;

constexpr auto kRefused = static_cast<HRESULT>(0x800706BA); // the RPC server is unavailable

HRESULT securityAnswer = S_OK;

HRESULT WINAPI AnswerOfSecurity(PSECURITY_DESCRIPTOR descriptor, LONG services,
                                SOLE_AUTHENTICATION_SERVICE* list, void* reserved,
                                DWORD authentication, DWORD impersonation, void* authentications,
                                DWORD capabilities, void* reservedToo)
{
    EXPECT_EQ(nullptr, descriptor);
    EXPECT_EQ(-1, services);
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(nullptr, reserved);
    EXPECT_EQ(2U, authentication);
    EXPECT_EQ(3U, impersonation);
    EXPECT_EQ(nullptr, authentications);
    EXPECT_EQ(0U, capabilities);
    EXPECT_EQ(nullptr, reservedToo);
    return securityAnswer;
}

HRESULT Failure(const std::function<void()>& step)
{
    try {
        step();
        return S_OK;
    } catch (const COMException& exception) {
        return exception.Code();
    }
}

struct ConnectWmiTest : testing::Test {
    const system::com::v1::ComApartment apartment;
};

} // namespace

TEST_F(ConnectWmiTest, SetComSecurity_succeeds_if_the_security_is_already_set)
{
    const ImportPatch patch("CoInitializeSecurity", AnswerOfSecurity);
    securityAnswer = RPC_E_TOO_LATE;
    EXPECT_EQ(S_OK, SetComSecurity());
    securityAnswer = S_OK;
    EXPECT_EQ(S_OK, SetComSecurity());
}

TEST_F(ConnectWmiTest, SetComSecurity_returns_every_other_failure)
{
    const ImportPatch patch("CoInitializeSecurity", AnswerOfSecurity);
    securityAnswer = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, SetComSecurity());
}

TEST_F(ConnectWmiTest, OpenNamespace_opens_root_cimv2_and_limits_its_wait)
{
    const StandInWmi standIn;
    const auto services = OpenNamespace(MakeLocator().Get());
    EXPECT_TRUE(services);
    EXPECT_EQ(L"root\\cimv2", TheWmiScript().connectedTo);
    EXPECT_EQ(0x80, TheWmiScript().connectFlags);
    EXPECT_TRUE(TheWmiScript().connectedPlainly);
    SetCallSecurity(services.Get());
    EXPECT_EQ((std::vector<DWORD>{10, 0, 3, 3, 0}), TheWmiScript().blanketAsked);
}

TEST_F(ConnectWmiTest, Each_step_throws_its_failure)
{
    {
        const StandInWmi standIn(kRefused);
        EXPECT_EQ(kRefused, Failure([] { static_cast<void>(MakeLocator()); }));
    }
    const StandInWmi standIn;
    const auto locator = MakeLocator();
    const auto services = OpenNamespace(locator.Get());
    TheWmiScript().connect = kRefused;
    EXPECT_EQ(kRefused, Failure([&] { static_cast<void>(OpenNamespace(locator.Get())); }));
    TheWmiScript().blanket = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, Failure([&] { SetCallSecurity(services.Get()); }));
}

} // namespace vqrx::test
