#include "wmi/WmiConnection.h"

#include "CapturingLogger.h"
#include "ImportPatch.h"
#include "StandInWmi.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"
#include "exception_utils/HResultText.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using cpp_utils::exception_utils::v1::HResultText;

class WmiConnectionTest : public ::testing::Test {
protected:
    using Line = CapturingLogger::Line;
    using Lines = std::vector<Line>;

    // RPC_S_SERVER_UNAVAILABLE as a result code.
    static constexpr auto kRefused = static_cast<HRESULT>(0x800706BA);

    void Connect() { wmi_.Connect(logger_); }

    system::com::v1::ComApartment apartment_;
    CapturingLogger logger_;
    system::daemon::daemon_mgr::v0::WmiConnection wmi_;
};

HRESULT WINAPI SecurityRefused(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*,
                               DWORD, DWORD, void*, DWORD, void*)
{
    return E_ACCESSDENIED;
}

HRESULT WINAPI SecurityTooLate(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*,
                               DWORD, DWORD, void*, DWORD, void*)
{
    return RPC_E_TOO_LATE;
}

} // namespace

TEST_F(WmiConnectionTest, Connect_reaches_the_namespace_of_processes_and_logs_two_lines)
{
    const StandInWmi standIn;
    Connect();
    EXPECT_EQ((Lines{{2, "Connecting to WMI resource ..."}, {2, "Connected to WMI resource"}}),
              logger_.Lines());
    EXPECT_EQ(L"root\\cimv2", TheWmiScript().connectedTo);
    EXPECT_EQ(0x80, TheWmiScript().connectFlags);
    EXPECT_EQ((std::vector<DWORD>{10, 0, 3, 3, 0}), TheWmiScript().blanketAsked);
    EXPECT_NE(nullptr, wmi_.Services());
}

TEST_F(WmiConnectionTest, Connect_succeeds_if_the_security_of_the_process_is_already_set)
{
    const StandInWmi standIn;
    const ImportPatch patch("CoInitializeSecurity", SecurityTooLate);
    Connect();
    EXPECT_EQ((Lines{{2, "Connecting to WMI resource ..."}, {2, "Connected to WMI resource"}}),
              logger_.Lines());
    EXPECT_NE(nullptr, wmi_.Services());
}

TEST_F(WmiConnectionTest, Connect_is_given_up_if_the_security_cannot_be_set)
{
    const StandInWmi standIn;
    const ImportPatch patch("CoInitializeSecurity", SecurityRefused);
    Connect();
    EXPECT_EQ((Lines{{0, "CoInitializeSecurity error " + HResultText(E_ACCESSDENIED)}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_.Services());
}

TEST_F(WmiConnectionTest, Connect_is_given_up_without_a_locator)
{
    const StandInWmi standIn(kRefused);
    Connect();
    EXPECT_EQ((Lines{{0, std::string("Init WMI errror ") + COMException(kRefused).what()}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_.Services());
}

TEST_F(WmiConnectionTest, Connect_is_given_up_if_the_connection_is_refused)
{
    const StandInWmi standIn;
    TheWmiScript().connect = kRefused;
    Connect();
    EXPECT_EQ((Lines{{2, "Connecting to WMI resource ..."},
                     {0, std::string("Init WMI errror ") + COMException(kRefused).what()}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_.Services());
}

TEST_F(WmiConnectionTest,
       Connection_is_kept_and_the_failure_is_logged_if_its_proxy_blanket_cannot_be_set)
{
    const StandInWmi standIn;
    TheWmiScript().blanket = E_ACCESSDENIED;
    Connect();
    EXPECT_EQ((Line{0, std::string("Init WMI errror ") + COMException(E_ACCESSDENIED).what()}),
              logger_.Lines().at(2));
    EXPECT_NE(nullptr, wmi_.Services());
}

} // namespace vqrx::test
