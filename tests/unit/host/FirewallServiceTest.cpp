#include "FirewallService.h"

#include "CapturingLogger.h"
#include "ImportPatch.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using namespace host::v0;
using Line = CapturingLogger::Line;
using Lines = std::vector<Line>;

std::set<SC_HANDLE> openHandles;
std::vector<std::pair<std::string, DWORD>> asked; // name and access rights of each handle

SC_HANDLE Noted(SC_HANDLE handle)
{
    const DWORD error = GetLastError();
    if (handle != nullptr) {
        openHandles.insert(handle);
    }
    SetLastError(error);
    return handle;
}

using OpenManager = SC_HANDLE WINAPI(LPCSTR, LPCSTR, DWORD);
OpenManager* realOpenManager = nullptr;
SC_HANDLE WINAPI NoteManager(LPCSTR machine, LPCSTR database, DWORD access)
{
    const std::string name = machine == nullptr && database == nullptr ? "local manager" : "other";
    asked.emplace_back(name, access);
    return Noted(realOpenManager(machine, database, access));
}

using OpenOne = SC_HANDLE WINAPI(SC_HANDLE, LPCSTR, DWORD);
OpenOne* realOpenOne = nullptr;
SC_HANDLE WINAPI NoteService(SC_HANDLE manager, LPCSTR name, DWORD access)
{
    asked.emplace_back(name, access);
    return Noted(realOpenOne(manager, name, access));
}

using CloseOne = BOOL WINAPI(SC_HANDLE);
CloseOne* realCloseOne = nullptr;
BOOL WINAPI NoteClose(SC_HANDLE handle)
{
    openHandles.erase(handle); // no change of the last error: the handle is there
    return realCloseOne(handle);
}

class FirewallServiceTest : public ::testing::Test {
protected:
    /// Waits for the service; the pauses are only noted. Expects that no handle stays open.
    bool Wait()
    {
        const auto before = openHandles; // those of the test's own services
        asked.clear();
        const bool result = WaitForFirewallService(&logger_, [this](std::uint32_t seconds) {
            slept_.push_back(seconds);
            if (onSleep_) {
                onSleep_();
            }
        });
        EXPECT_EQ(before, openHandles);
        return result;
    }

    ImportPatch openManager_{"OpenSCManagerA", &NoteManager, realOpenManager};
    ImportPatch openOne_{"OpenServiceA", &NoteService, realOpenOne};
    ImportPatch closeOne_{"CloseServiceHandle", &NoteClose, realCloseOne};
    CapturingLogger logger_;
    std::vector<std::uint32_t> slept_;
    std::function<void()> onSleep_;
};

SC_HANDLE WINAPI RefuseManager(LPCSTR, LPCSTR, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

DWORD configBuffer = 0;
BOOL WINAPI RefuseConfig(SC_HANDLE, LPQUERY_SERVICE_CONFIGA, DWORD size, LPDWORD)
{
    configBuffer = size;
    return FALSE;
}

BOOL WINAPI RefuseStatus(SC_HANDLE, LPSERVICE_STATUS)
{
    return FALSE;
}

int pendingAnswers = 0;
BOOL WINAPI StayPending(SC_HANDLE, LPSERVICE_STATUS status)
{
    status->dwCurrentState = pendingAnswers-- > 0 ? SERVICE_START_PENDING : SERVICE_RUNNING;
    return TRUE;
}

} // namespace

TEST_F(FirewallServiceTest, Wait_fails_if_the_service_manager_cannot_be_opened)
{
    const ImportPatch patch("OpenSCManagerA", RefuseManager);
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{0, "Firewall: Could not connect to service manager"}}), logger_.Lines());
}

TEST_F(FirewallServiceTest, Wait_fails_without_a_firewall_service_and_logs_the_error)
{
    RequireNoService("MpsSvc");
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{0, "Firewall: Could not open service (1060)"}}), logger_.Lines());
}

TEST_F(FirewallServiceTest, Wait_for_a_running_service_returns_at_once)
{
    TestService service("MpsSvc");
    service.Start();
    EXPECT_TRUE(Wait());
    EXPECT_TRUE(logger_.Lines().empty());
    EXPECT_TRUE(slept_.empty());
}

TEST_F(FirewallServiceTest, Wait_asks_for_full_access_to_the_manager_and_to_query_the_services)
{
    TestService service("MpsSvc");
    service.Start();
    EXPECT_TRUE(Wait());
    EXPECT_EQ((std::vector<std::pair<std::string, DWORD>>{
                  {"local manager", 0xF003F}, {"MpsSvc", 5}, {"SharedAccess", 5}}),
              asked);
}

TEST_F(FirewallServiceTest, Older_service_is_used_if_there_is_no_newer_one)
{
    TestService service("SharedAccess");
    service.Start();
    EXPECT_TRUE(Wait());
}

TEST_F(FirewallServiceTest, Newer_service_is_used_if_there_are_both)
{
    TestService newer("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    TestService older("SharedAccess");
    older.Start();
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{1, "Firewall: Service is disabled."}}), logger_.Lines());
}

TEST_F(FirewallServiceTest, Wait_for_a_disabled_service_fails)
{
    const TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{1, "Firewall: Service is disabled."}}), logger_.Lines());
}

TEST_F(FirewallServiceTest, Wait_fails_if_the_configuration_cannot_be_read)
{
    const TestService service("MpsSvc");
    const ImportPatch patch("QueryServiceConfigA", RefuseConfig);
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{0, "Firewall: Could not query service config"}}), logger_.Lines());
    EXPECT_EQ(8192U, configBuffer);
}

TEST_F(FirewallServiceTest, Wait_fails_if_the_status_cannot_be_read)
{
    const TestService service("MpsSvc");
    const ImportPatch patch("QueryServiceStatus", RefuseStatus);
    EXPECT_FALSE(Wait());
    EXPECT_EQ((Lines{{0, "Firewall: Could not query service status"}}), logger_.Lines());
}

TEST_F(FirewallServiceTest, Pauses_double_while_the_service_starts)
{
    const TestService service("MpsSvc");
    pendingAnswers = 5;
    const ImportPatch patch("QueryServiceStatus", StayPending);
    EXPECT_TRUE(Wait());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 4, 8, 16}), slept_);
    const auto lines = logger_.Lines();
    ASSERT_EQ(10U, lines.size());
    EXPECT_EQ((Line{0, "Firewall: Current status code 2"}), lines[0]);
    EXPECT_EQ((Line{0, "Firewall: Waiting 1 s for the service to be running."}), lines[1]);
    EXPECT_EQ((Line{0, "Firewall: Current status code 2"}), lines[8]);
    EXPECT_EQ((Line{0, "Firewall: Waiting 16 s for the service to be running."}), lines[9]);
}

TEST_F(FirewallServiceTest, Wait_for_a_stopped_service_ends_after_the_service_is_started)
{
    TestService service("MpsSvc");
    onSleep_ = [&] {
        if (slept_.size() == 2) {
            service.Start();
        }
    };
    EXPECT_TRUE(Wait());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2}), slept_);
    EXPECT_EQ((Line{0, "Firewall: Current status code 1"}), logger_.Lines().at(0));
}

TEST(FirewallServiceSlowTest, Wait_sleeps_until_a_service_that_starts_slowly_runs)
{
    CapturingLogger logger;
    TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 1500);
    service.Start(false);
    EXPECT_TRUE(service.WaitForState(SERVICE_START_PENDING));
    EXPECT_TRUE(WaitForFirewallService(&logger));
    EXPECT_EQ((Line{0, "Firewall: Current status code 2"}), logger.Lines().at(0));
    EXPECT_EQ((Line{0, "Firewall: Waiting 1 s for the service to be running."}),
              logger.Lines().at(1));
}

TEST(DoublingPauseTest, Pause_doubles_up_to_its_limit_and_then_stays)
{
    DoublingPause pause;
    for (std::uint32_t expected = 1; expected < (1U << 30); expected *= 2) {
        EXPECT_EQ(expected, pause.Seconds());
        pause.Double();
    }
    pause.Double();
    pause.Double();
    EXPECT_EQ(1U << 30, pause.Seconds());
}

} // namespace vqrx::test
