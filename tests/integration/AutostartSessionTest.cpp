// daemonctl autostart for a guard that starts when a user logs on.
#include "AutostartFixture.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardedMachine.h"
#include "TempFolder.h"

#include <nlohmann/json.hpp>

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace vqrx::test {
namespace {

using AutostartSession = Autostart;

TEST_F(AutostartSession, Second_guard_of_a_session_is_not_started)
{
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const Answer installed = Daemonctl("autostart install --session");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_TRUE(installed.output.ends_with(
        "\na guard runs already, with its former settings: daemonctl exit, then daemonctl autostart "
        "start\n"))
        << installed;
    EXPECT_EQ(ProcessesNamed("DaemonGuard.exe").size(), 1U);
    machine_.KillGuard();
}

TEST_F(AutostartSession, Service_is_not_started_beside_a_guard_of_a_session)
{
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const Answer installed = Daemonctl("autostart install");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_TRUE(installed.output.ends_with("\na guard runs already, with its former settings: "
                                           "daemonctl exit, then daemonctl autostart start\n"))
        << installed;
    EXPECT_EQ(State(), DWORD{SERVICE_STOPPED});
    EXPECT_EQ(ProcessesNamed("DaemonGuard.exe").size(), 1U);
    machine_.KillGuard();
}

// Everybody may run a program of this name.
TEST_F(AutostartSession, Program_of_another_folder_with_the_name_of_the_guard_prevents_no_start)
{
    const TempFolder folder;
    std::filesystem::copy_file(worker_, folder.File("DaemonGuard.exe"));
    const ChildProcess stranger('"' + folder.File("DaemonGuard.exe") + '"');
    const Answer installed = Daemonctl("autostart install");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_TRUE(installed.output.ends_with(StartedAsService())) << installed;
    EXPECT_TRUE(machine_.WaitForTakeOver());
}

TEST_F(AutostartSession, Session_is_an_entry_of_the_Run_key_with_the_fleet_file)
{
    machine_.WriteFleet(worker_ + " 1\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    const Answer installed = Daemonctl("autostart install --session --no-start --fleet " + fleet);
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_EQ(installed.output, "the guard starts when a user logs on: " +
                                    Guard("--session --fleet \"" + fleet + "\"\n"));
    EXPECT_TRUE(ProcessesNamed("DaemonGuard.exe").empty());
    const std::string status = Daemonctl("autostart status").output;
    EXPECT_TRUE(status.starts_with(
        "ok       autostart         the machine's Run key starts the supervisor when a user logs on: " +
        Guard("--session --fleet \"" + fleet + "\"") + "\n"))
        << status;
    EXPECT_NE(status.find("\nok       fleet-file        " + fleet + ": 1 program\n"),
              std::string::npos)
        << status;
    std::filesystem::remove(fleet);
    const Answer missing = Daemonctl("autostart status");
    EXPECT_EQ(missing.exitCode, 4U) << missing;
    EXPECT_NE(missing.output.find("failure  fleet-file        " + fleet + " does not exist\n"),
              std::string::npos)
        << missing;
    EXPECT_EQ(Daemonctl("autostart remove"),
              (Answer{0,
                      "no guard starts at power-on any more; a guard that runs goes on until "
                      "daemonctl exit\n",
                      ""}));
}

bool LogsOnByItself()
{
    std::array<wchar_t, 16> text{};
    auto size = static_cast<DWORD>(sizeof text);
    return RegGetValueW(
               HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon",
               L"AutoAdminLogon", RRF_RT_REG_SZ, nullptr, text.data(), &size) == ERROR_SUCCESS &&
           std::wstring_view(text.data()) == L"1";
}

// A machine that runs the test kit may log a user on by itself: then there is nothing to warn of.
TEST_F(AutostartSession, Session_to_which_nobody_is_logged_on_by_itself_is_a_warning)
{
    const std::string nobody = "Windows logs no user on by itself (AutoAdminLogon is not 1): after "
                               "power-on nothing starts until somebody logs on\n";
    const std::string remedy = "As administrator: netplwiz. It asks for the password, which must "
                               "not stand in a command line: docs/unattended.md, \"Automatic "
                               "logon\".\n";
    const Answer installed = Daemonctl("autostart install --session --no-start");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_EQ(installed.error.starts_with("daemonctl: warning: " + nobody + "  " + remedy),
              !LogsOnByItself())
        << installed;
    const Answer status = Daemonctl("autostart status");
    EXPECT_EQ(status.output.find("\nwarning  session           " + nobody) != std::string::npos,
              !LogsOnByItself())
        << status;
    EXPECT_EQ(Daemonctl("autostart install --no-start").error.find(nobody), std::string::npos);
    EXPECT_EQ(Daemonctl("autostart status").output.find("session  "), std::string::npos);
}

TEST_F(AutostartSession, Session_names_the_command_that_waits_for_its_supervisor)
{
    const Answer installed = Daemonctl("autostart install --session");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    const std::string hint = "\nthe guard was started now; to wait for the supervisor: daemonctl "
                             "wait --for supervisor\n";
    EXPECT_TRUE(installed.output.ends_with(hint)) << installed;
}

TEST_F(AutostartSession, Doctor_checks_how_the_supervisor_is_started)
{
    EXPECT_EQ(Daemonctl("autostart install --session --no-start").exitCode, 0U);
    const auto report = nlohmann::json::parse(Daemonctl("doctor --json").output);
    std::string texts;
    for (const auto& check : report.at("checks")) {
        if (check.at("check") == "autostart" || check.at("check") == "fleet-file") {
            texts += check.at("verdict").get<std::string>() + " " +
                     check.at("text").get<std::string>() + "\n";
        }
    }
    EXPECT_EQ(texts, "ok the machine's Run key starts the supervisor when a user logs on: " +
                         Guard("--session") + "\nok there is no " + machine_.App() +
                         "\\fleet.txt: the guard launches nothing at power-on\n");
}

} // namespace
} // namespace vqrx::test
