// The service manager and the Run key of this machine.
#include "Autostart.h"

#include "ImportPatch.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using system::win32::v1::UniqueServiceHandle;

const GuardCommand kService{"C:\\No Such\\DaemonGuard.exe", {GuardMode::kService, "D:\\fleet.txt"}};
const GuardCommand kSession{"C:\\No Such\\DaemonGuard.exe", {GuardMode::kSession, ""}};

// What ChangeServiceConfig2W was asked to set.
struct Recovery {
    std::vector<std::pair<SC_ACTION_TYPE, DWORD>> actions; // with their delays, milliseconds
    DWORD resetSeconds = 0;
    BOOL alsoAfterErrors = FALSE;
};
Recovery recovery;

BOOL WINAPI NoteRecovery(SC_HANDLE, DWORD level, void* info)
{
    if (level == SERVICE_CONFIG_FAILURE_ACTIONS) {
        const auto* const actions = static_cast<const SERVICE_FAILURE_ACTIONSW*>(info);
        for (DWORD index = 0; index < actions->cActions; ++index) {
            recovery.actions.emplace_back(actions->lpsaActions[index].Type,
                                          actions->lpsaActions[index].Delay);
        }
        recovery.resetSeconds = actions->dwResetPeriod;
    } else if (level == SERVICE_CONFIG_FAILURE_ACTIONS_FLAG) {
        recovery.alsoAfterErrors = static_cast<const SERVICE_FAILURE_ACTIONS_FLAG*>(info)
                                       ->fFailureActionsOnNonCrashFailures;
    }
    return TRUE;
}

class Autostart : public ::testing::Test {
protected:
    Autostart() { RemoveAutostart(); }
    ~Autostart() override { RemoveAutostart(); }
    Autostart(const Autostart&) = delete;
    Autostart& operator=(const Autostart&) = delete;

    static UniqueServiceHandle OpenService()
    {
        const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
        return UniqueServiceHandle(OpenServiceW(manager.Get(), L"DaemonGuard", SERVICE_ALL_ACCESS));
    }
};

TEST_F(Autostart, Machine_without_an_entry_has_none_and_there_is_none_to_remove)
{
    EXPECT_TRUE(ReadAutostart().empty());
    EXPECT_FALSE(RemoveAutostart());
}

// Wine accepts recovery actions, forgets them and does not carry them out.
TEST_F(Autostart, Service_manager_is_told_to_start_the_guard_again_after_a_failure)
{
    recovery = {};
    {
        const ImportPatch patch("ChangeServiceConfig2W", NoteRecovery);
        InstallAutostart(kService);
    }
    EXPECT_EQ(recovery.actions,
              (std::vector<std::pair<SC_ACTION_TYPE, DWORD>>{{SC_ACTION_RESTART, 1000},
                                                             {SC_ACTION_RESTART, 5000},
                                                             {SC_ACTION_RESTART, 60000}}));
    EXPECT_EQ(recovery.resetSeconds, 3600U);
    EXPECT_EQ(recovery.alsoAfterErrors, TRUE);
}

TEST_F(Autostart, Service_starts_with_Windows_and_has_a_description)
{
    InstallAutostart(kService);
    const auto entries = ReadAutostart();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mode, GuardMode::kService);
    EXPECT_EQ(entries[0].commandLine,
              R"("C:\No Such\DaemonGuard.exe" --service --fleet "D:\fleet.txt")");
    EXPECT_TRUE(entries[0].isAutomatic);
    EXPECT_FALSE(entries[0].isRunning);

    const UniqueServiceHandle service = OpenService();
    std::array<std::byte, 1024> buffer{};
    DWORD needed = 0;
    ASSERT_TRUE(QueryServiceConfig2W(service.Get(), SERVICE_CONFIG_DESCRIPTION,
                                     reinterpret_cast<BYTE*>(buffer.data()), buffer.size(),
                                     &needed));
    EXPECT_STREQ(reinterpret_cast<const SERVICE_DESCRIPTIONW*>(buffer.data())->lpDescription,
                 L"Starts the DaemonManager supervisor, and starts it again if it ends without an "
                 L"order.");
    EXPECT_TRUE(RemoveAutostart());
}

TEST_F(Autostart, Second_installation_changes_the_entry_and_replaces_one_of_the_other_kind)
{
    InstallAutostart(kSession);
    auto entries = ReadAutostart();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mode, GuardMode::kSession);
    EXPECT_EQ(entries[0].commandLine, R"("C:\No Such\DaemonGuard.exe" --session)");
    InstallAutostart(kService);
    InstallAutostart({"C:\\b.exe", {GuardMode::kService, ""}});
    entries = ReadAutostart();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].commandLine, R"("C:\b.exe" --service)");
    InstallAutostart(kSession);
    entries = ReadAutostart();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mode, GuardMode::kSession);
    EXPECT_TRUE(RemoveAutostart());
    EXPECT_TRUE(ReadAutostart().empty());
}

TEST_F(Autostart, Guard_whose_program_is_missing_cannot_be_started_and_the_text_says_why)
{
    try {
        StartGuard(kSession);
        ADD_FAILURE() << "it was started";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "C:\\No Such\\DaemonGuard.exe cannot be started: Windows error 3");
    }
    try {
        StartGuard(kService);
        ADD_FAILURE() << "it was started";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the service DaemonGuard cannot be started: Windows error 1060");
    }
}

} // namespace
} // namespace vqrx::test
