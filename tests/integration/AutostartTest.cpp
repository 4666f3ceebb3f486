// daemonctl autostart, and the guard as a service, with the real service manager and the Run key.
#include "AutostartFixture.h"
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardedMachine.h"
#include "OpenToAll.h"
#include "SupervisorProcess.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

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

// The service ends its supervisor before it stops.
TEST_F(Autostart, Start_directly_after_the_stop_of_the_service_waits_until_it_has_stopped)
{
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    ASSERT_TRUE(SuspendProcess(supervisor));
    SERVICE_STATUS status{};
    EXPECT_TRUE(ControlService(Service().Get(), SERVICE_CONTROL_STOP, &status));
    const CapturedProgram start('"' + ProductProgram("daemonctl.exe") + "\" autostart start");
    const std::string waits = "waiting at most 150 s until the former guard has ended\n";
    EXPECT_TRUE(WaitUntil([&] { return start.Output() == waits; })) << start.Output();
    ASSERT_TRUE(ResumeProcess(supervisor));
    EXPECT_EQ(start.ExitCode(), 0U);
    EXPECT_EQ(start.Output(), waits + StartedAsService());
    EXPECT_TRUE(machine_.WaitForTakeOver(2));
}

TEST_F(Autostart, Guard_that_runs_keeps_its_settings_and_the_commands_say_so)
{
    const std::string runsAlready =
        "a guard runs already, with its former settings: sc stop DaemonGuard, "
        "then daemonctl autostart start\n";
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_EQ(Daemonctl("autostart start"), (Answer{0, runsAlready, ""}));
    const Answer installed = Daemonctl("autostart install --trust");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_EQ(installed.output, "the guard starts with Windows, as the service DaemonGuard: " +
                                    Guard("--service --trust") + "\n" + runsAlready);
    EXPECT_EQ(
        Daemonctl("autostart remove"),
        (Answer{0,
                "no guard starts at power-on any more; a guard that runs goes on until sc stop "
                "DaemonGuard\n",
                ""}));
}

TEST_F(Autostart, Fleet_file_that_is_missing_or_has_faults_is_refused_and_nothing_is_done)
{
    const std::string nothing =
        "daemonctl: nothing was done\n"
        "  For the form of a fleet file, with an example: daemonctl apply --help\n";
    EXPECT_EQ(Daemonctl("autostart install --fleet C:\\no\\such.txt"),
              (Answer{2, "", "daemonctl: C:\\no\\such.txt does not exist\n" + nothing}));
    machine_.WriteFleet("\"x\nno_such_program.exe\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    EXPECT_EQ(Daemonctl("autostart install --fleet " + fleet),
              (Answer{2, "",
                      "daemonctl: " + fleet +
                          ", line 1: a double quote is not closed\ndaemonctl: " + fleet +
                          ", line 2: no_such_program.exe is neither a file in " + machine_.App() +
                          " nor a Windows service: write its full path\n" + nothing}));
    EXPECT_EQ(Daemonctl("autostart status").exitCode, 1U);
}

TEST_F(Autostart, Fleet_file_that_others_may_write_is_a_failure_of_the_service_unless_it_is_trusted)
{
    const std::string worker = machine_.Root() + "\\worker.exe";
    std::filesystem::copy_file(worker_, worker);
    OpenToAll(worker);
    machine_.WriteFleet(worker + " 1\n");
    const std::string fleet = machine_.App() + "\\fleet.txt";
    OpenToAll(fleet);
    const Answer installed = Daemonctl("autostart install --no-start");
    EXPECT_EQ(installed.exitCode, 0U) << installed;
    EXPECT_NE(installed.error.find("the guard does not believe " + fleet), std::string::npos)
        << installed;
    EXPECT_NE(installed.error.find("can change what it starts: "), std::string::npos) << installed;
    EXPECT_NE(installed.error.find("may write to " + worker), std::string::npos) << installed;
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

// The hand-over waits for another program, and the guard waits for the hand-over before it ends.
TEST_F(Autostart, Service_that_waits_for_a_hand_over_at_its_stop_goes_on_reporting_that_it_stops)
{
    std::filesystem::create_directory(machine_.Root() + "\\Logs");
    system::win32::v1::UniqueKernelHandle lock(
        CreateFileA((machine_.Root() + "\\Logs\\DaemonManager.lock").c_str(), GENERIC_WRITE, 0,
                    nullptr, CREATE_NEW, 0, nullptr));
    ASSERT_TRUE(lock);
    EXPECT_EQ(Daemonctl("autostart install").exitCode, 0U);
    ASSERT_NE(machine_.WaitForGuardLog("Hand-over: waiting until another program "), "");
    SERVICE_STATUS status{};
    EXPECT_TRUE(ControlService(Service().Get(), SERVICE_CONTROL_STOP, &status));
    ASSERT_NE(machine_.WaitForGuardLog("Supervisor has ended: "), "");
    status = Status();
    const DWORD before = status.dwCheckPoint;
    EXPECT_EQ(status.dwCurrentState, DWORD{SERVICE_STOP_PENDING});
    EXPECT_TRUE(WaitUntil([&] {
        status = Status();
        return status.dwCheckPoint > before || status.dwCurrentState != SERVICE_STOP_PENDING;
    }));
    EXPECT_EQ(status.dwCurrentState, DWORD{SERVICE_STOP_PENDING});
    lock.Reset();
    EXPECT_TRUE(WaitUntil([] { return State() == SERVICE_STOPPED; }));
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

} // namespace
} // namespace vqrx::test
