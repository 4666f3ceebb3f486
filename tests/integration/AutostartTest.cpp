// daemonctl autostart, and the guard as a service, with the real service manager and the Run key.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardedMachine.h"
#include "OpenToAll.h"
#include "SupervisorProcess.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueServiceHandle;

class Autostart : public ::testing::Test {
protected:
    Autostart() { static_cast<void>(Daemonctl("autostart remove")); }
    ~Autostart() override
    {
        SERVICE_STATUS status{};
        ControlService(Service().Get(), SERVICE_CONTROL_STOP, &status);
        EXPECT_TRUE(WaitUntil([] { return ProcessesNamed("DaemonGuard.exe").empty(); }));
        static_cast<void>(Daemonctl("autostart remove"));
    }
    Autostart(const Autostart&) = delete;
    Autostart& operator=(const Autostart&) = delete;

    static UniqueServiceHandle Service()
    {
        const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
        return UniqueServiceHandle(OpenServiceW(manager.Get(), L"DaemonGuard", SERVICE_ALL_ACCESS));
    }

    static DWORD State()
    {
        SERVICE_STATUS status{};
        QueryServiceStatus(Service().Get(), &status);
        return status.dwCurrentState;
    }

    static std::string Guard(const std::string& options)
    {
        return '"' + ProductProgram("DaemonGuard.exe") + "\" " + options;
    }

    // What start and install print: no program of a desktop finds the supervisor of a service.
    [[nodiscard]] std::string StartedAsService() const
    {
        return "the guard was started now; to see what it does: daemonctl log --file \"" +
               machine_.GuardLog() +
               "\"\nprograms of a desktop do not find the supervisor of a service: daemonctl wait "
               "--for supervisor needs a task of the account SYSTEM\n";
    }

    GuardedMachine machine_;
    const std::string worker_ = TestProgram("no_windows");
};

TEST_F(Autostart, Machine_on_which_nothing_is_set_up)
{
    EXPECT_EQ(
        Daemonctl("autostart status"),
        (Answer{
            1,
            "ok       autostart         no guard starts the supervisor at power-on (see daemonctl "
            "autostart)\n1 ok, 0 warnings, 0 failures\n",
            ""}));
    EXPECT_EQ(Daemonctl("autostart remove"),
              (Answer{1, "nothing starts a guard at power-on\n", ""}));
    EXPECT_EQ(Daemonctl("autostart start"),
              (Answer{1, "no guard is set up; see daemonctl autostart --help\n", ""}));
}

TEST_F(Autostart, Service_starts_supervisor_and_fleet_and_its_stop_leaves_the_daemons_running)
{
    machine_.WriteFleet(worker_ + " 1\n");
    const Answer installed = Daemonctl("autostart install");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_EQ(installed.output, "the guard starts with Windows, as the service DaemonGuard: " +
                                    Guard("--service") + "\n" + StartedAsService());
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_EQ(State(), DWORD{SERVICE_RUNNING});
    ASSERT_TRUE(WaitUntil([] { return ProcessesNamed("no_windows.exe").size() == 1; }));
    EXPECT_EQ(
        Daemonctl("autostart status"),
        (Answer{0,
                "ok       autostart         the service DaemonGuard starts the supervisor with "
                "Windows: " +
                    Guard("--service") + "\nok       fleet-file        " + machine_.App() +
                    "\\fleet.txt: 1 program\n2 ok, 0 warnings, 0 failures\n",
                ""}));
    SERVICE_STATUS status{};
    EXPECT_TRUE(ControlService(Service().Get(), SERVICE_CONTROL_STOP, &status));
    EXPECT_TRUE(WaitUntil([] { return State() == SERVICE_STOPPED; }));
    EXPECT_TRUE(ProcessesNamed("DaemonManager.exe").empty());
    EXPECT_EQ(ProcessesNamed("no_windows.exe").size(), 1U);
    EXPECT_NE(machine_.WaitForGuardLog("Guard ends"), "");
}

TEST_F(Autostart, Order_to_exit_stops_the_service_too)
{
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    EXPECT_TRUE(WaitUntil([] { return State() == SERVICE_STOPPED; }));
    const Answer status = Daemonctl("autostart status");
    EXPECT_EQ(status.exitCode, 1U) << status;
    EXPECT_TRUE(status.output.starts_with(
        "warning  autostart         the service DaemonGuard starts the supervisor with Windows, but it "
        "does not run now: if the supervisor ends, nobody starts it again\n"))
        << status;
    EXPECT_EQ(Daemonctl("autostart start"), (Answer{0, StartedAsService(), ""}));
    EXPECT_TRUE(machine_.WaitForTakeOver(2));
}

// After the order the guard reads the log, and may end a hand-over, before its service stops.
TEST_F(Autostart, Start_directly_after_an_order_waits_until_the_former_guard_has_ended)
{
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD former = ProcessesNamed("DaemonGuard.exe").front().processId;
    ASSERT_TRUE(SuspendProcess(former));
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    const CapturedProgram start('"' + ProductProgram("daemonctl.exe") + "\" autostart start");
    const std::string waits = "waiting at most 20 s until the former guard has ended\n";
    EXPECT_TRUE(WaitUntil([&] { return start.Output() == waits; })) << start.Output();
    ASSERT_TRUE(ResumeProcess(former));
    EXPECT_EQ(start.ExitCode(), 0U);
    EXPECT_EQ(start.Output(), waits + StartedAsService());
    EXPECT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_FALSE(IsRunning(former));
}

TEST_F(Autostart, Guard_that_runs_keeps_its_settings_and_the_commands_say_so)
{
    const std::string runsAlready =
        "a guard runs already, with its former settings: daemonctl exit, "
        "then daemonctl autostart start\n";
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_EQ(Daemonctl("autostart start"), (Answer{0, runsAlready, ""}));
    const Answer installed = Daemonctl("autostart install --trust");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_EQ(installed.output, "the guard starts with Windows, as the service DaemonGuard: " +
                                    Guard("--service --trust") + "\n" + runsAlready);
}

TEST_F(Autostart, Second_guard_of_a_session_is_not_started)
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

TEST_F(Autostart, Session_is_an_entry_of_the_Run_key_with_the_fleet_file)
{
    machine_.WriteFleet(worker_ + " 1\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    EXPECT_EQ(Daemonctl("autostart install --session --no-start --fleet " + fleet),
              (Answer{0,
                      "the guard starts when a user logs on: " +
                          Guard("--session --fleet \"" + fleet + "\"\n"),
                      ""}));
    EXPECT_TRUE(ProcessesNamed("DaemonGuard.exe").empty());
    EXPECT_EQ(
        Daemonctl("autostart status").output,
        "ok       autostart         the machine's Run key starts the supervisor when a user logs on: " +
            Guard("--session --fleet \"" + fleet + "\"") + "\nok       fleet-file        " + fleet +
            ": 1 program\n2 ok, 0 warnings, 0 failures\n");
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

TEST_F(Autostart, Session_names_the_command_that_waits_for_its_supervisor)
{
    const Answer installed = Daemonctl("autostart install --session");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    const std::string hint = "\nthe guard was started now; to wait for the supervisor: daemonctl "
                             "wait --for supervisor\n";
    EXPECT_TRUE(installed.output.ends_with(hint)) << installed;
}

TEST_F(Autostart, Fleet_file_that_is_missing_or_has_faults_is_refused_and_nothing_is_done)
{
    EXPECT_EQ(
        Daemonctl("autostart install --fleet C:\\no\\such.txt"),
        (Answer{2, "",
                "daemonctl: C:\\no\\such.txt does not exist\ndaemonctl: nothing was done\n"}));
    machine_.WriteFleet("\"x\nno_such_program.exe\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    EXPECT_EQ(Daemonctl("autostart install --fleet " + fleet),
              (Answer{2, "",
                      "daemonctl: " + fleet +
                          ", line 1: a double quote is not closed\ndaemonctl: " + fleet +
                          ", line 2: no_such_program.exe is neither a file in " + machine_.App() +
                          " nor a Windows service: write its full path\ndaemonctl: nothing was "
                          "done\n"}));
    EXPECT_EQ(Daemonctl("autostart status").exitCode, 1U);
}

TEST_F(Autostart, Fleet_file_that_others_may_write_is_a_failure_of_the_service_unless_it_is_trusted)
{
    machine_.WriteFleet(worker_ + " 1\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    OpenToAll(fleet);
    const Answer installed = Daemonctl("autostart install --no-start");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_NE(installed.error.find("the guard does not believe " + fleet), std::string::npos)
        << installed;
    const Answer status = Daemonctl("autostart status");
    EXPECT_EQ(status.exitCode, 4U) << status;
    EXPECT_NE(
        status.output.find("failure  fleet-file        the guard launches nothing: others than "
                           "administrators may have written " +
                           fleet + "\n"),
        std::string::npos)
        << status;
    const Answer trusting = Daemonctl("autostart install --no-start --trust");
    EXPECT_EQ(trusting.output, "the guard starts with Windows, as the service DaemonGuard: " +
                                   Guard("--service --trust\n"));
    const Answer trusted = Daemonctl("autostart status");
    EXPECT_EQ(trusted.exitCode, 1U) << trusted;
    EXPECT_NE(trusted.output.find("warning  fleet-file        the guard was set up with --trust"),
              std::string::npos)
        << trusted;
}

// A person may have the file open, or a virus scanner.
TEST_F(Autostart, Fleet_file_that_another_program_holds_is_applied_after_it_is_closed)
{
    machine_.WriteFleet(worker_ + " 1\n");
    system::win32::v1::UniqueKernelHandle held(CreateFileA((machine_.App() + "\\fleet.txt").c_str(),
                                                           GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                           0, nullptr));
    ASSERT_TRUE(held);
    const Answer made = Daemonctl("autostart install --no-start");
    EXPECT_EQ(made.exitCode, 0U) << made;
    EXPECT_EQ(Daemonctl("autostart start").exitCode, 0U);
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: nothing was launched"), "");
    held.Reset();
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 1 launched, 0 attached, 0 there already, 0 not"),
              "");
}

TEST_F(Autostart, Wrong_options_are_refused)
{
    for (const char* arguments : {"", "frobnicate", "status --session", "remove --fleet x",
                                  "status --trust", "install --service --session"}) {
        const Answer answer = Daemonctl(std::string("autostart ") + arguments);
        EXPECT_EQ(answer.exitCode, 2U) << arguments;
        EXPECT_NE(answer.error, "") << arguments;
    }
}

TEST_F(Autostart, Doctor_checks_how_the_supervisor_is_started)
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
