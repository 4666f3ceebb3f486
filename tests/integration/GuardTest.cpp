// DaemonGuard.exe in a session, with the real supervisor.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardedMachine.h"
#include "OpenToAll.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

class Guard : public ::testing::Test {
protected:
    // Returns the process ids of the running daemons by command.
    static std::map<std::string, DWORD> Daemons()
    {
        std::map<std::string, DWORD> daemons;
        for (const auto& daemon : ListedDaemons()) {
            EXPECT_EQ(daemons.count(daemon.at("command")), 0U) << daemon;
            daemons[daemon.at("command")] =
                daemon.at("process_id").is_null() ? 0 : daemon.at("process_id").get<DWORD>();
        }
        return daemons;
    }

    // Writes a fleet of workers and waits until the guard's supervisor runs them all.
    std::map<std::string, DWORD> StartFleet(int count)
    {
        std::string fleet;
        for (int index = 0; index < count; ++index) {
            fleet += worker_ + " " + std::to_string(index) + "\r\n";
        }
        machine_.WriteFleet(fleet);
        machine_.StartGuard();
        EXPECT_TRUE(machine_.WaitForTakeOver());
        EXPECT_TRUE(WaitUntil([&] {
            return ProcessesNamed("no_windows.exe").size() == static_cast<std::size_t>(count);
        }));
        EXPECT_EQ(Daemonctl("wait " + std::to_string(count - 1)).exitCode, 0U);
        return Daemons();
    }

    // Expects that each daemon is killed once and comes back once.
    void ExpectThatEachComesBack(const std::map<std::string, DWORD>& daemons)
    {
        for (const auto& [command, process] : daemons) {
            KillProcess(process);
        }
        EXPECT_TRUE(WaitUntil([&] {
            const auto now = Daemons();
            return now.size() == daemons.size() &&
                   std::all_of(now.begin(), now.end(), [&](const auto& daemon) {
                       return daemon.second != 0 && daemon.second != daemons.at(daemon.first);
                   });
        }));
        EXPECT_EQ(ProcessesNamed("no_windows.exe").size(), daemons.size());
    }

    const std::string worker_ = TestProgram("no_windows");
    GuardedMachine machine_;
};

TEST_F(Guard, Starts_the_supervisor_and_applies_the_fleet_file)
{
    const auto daemons = StartFleet(2);
    EXPECT_EQ(daemons.size(), 2U);
    EXPECT_NE(machine_.WaitForGuardLog("Guard 1.0.0 begins, in a session; program: " +
                                       ProductProgram("DaemonManager.exe") +
                                       "; fleet file: " + machine_.App() + "\\fleet.txt"),
              "");
    const std::string process = "process " + std::to_string(GuardedMachine::WaitForSupervisor());
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor started: " + process), "");
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is published: " + process + ", after "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 0 attached, 0 already, 0 not"), "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: launched          " + worker_ + " 0: daemon 0"), "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 2 launched, 0 attached, 0 there already, 0 not"),
              "");
    EXPECT_TRUE(HasConsoleWindow(GuardedMachine::WaitForSupervisor())); // somebody may look at it
    // People read the guard's log as they read the supervisor's.
    const Answer log = Daemonctl("log --file " + machine_.GuardLog());
    EXPECT_EQ(log.exitCode, 0U) << log;
    EXPECT_NE(log.output.find(" Supervisor started: " + process + "\n"), std::string::npos) << log;
}

TEST_F(Guard, Supervisor_that_was_terminated_is_started_again_and_gets_its_daemons)
{
    const auto before = StartFleet(3);
    KillProcess(GuardedMachine::WaitForSupervisor());
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_EQ(Daemons(), before);
    EXPECT_NE(machine_.WaitForGuardLog("Next start of the supervisor in 0 s"), "");
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 3 attached, 0 already, 0 not"), "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 0 attached, 3 there already, 0 not"),
              "");
    ExpectThatEachComesBack(before);
}

// Its parent is this test, which runs: so only the hand-over knows that nobody watches it.
TEST_F(Guard, Daemon_that_cannot_be_handed_over_is_not_launched_a_second_time)
{
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const ChildProcess child('"' + worker_ + "\" 1");
    EXPECT_EQ(Daemonctl("attach " + std::to_string(child.Pid())).exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 0").exitCode, 0U);
    machine_.WriteFleet(worker_ + " 1\n");
    const PrefixStandIns broken(PrefixStandIns::Wmi::kBroken); // the next supervisor refuses Attach
    KillProcess(GuardedMachine::WaitForSupervisor());
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 0 attached, 0 already, 1 not"), "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 0 attached, 0 there already, 1 not"),
              "");
    EXPECT_TRUE(Daemons().empty());
    EXPECT_TRUE(child.Running());
}

TEST_F(Guard, Daemon_that_ended_while_no_supervisor_ran_is_launched_again)
{
    const auto before = StartFleet(2);
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    machine_.KillGuard();
    KillProcess(supervisor);
    KillProcess(before.at(worker_ + " 0"));
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_TRUE(WaitUntil([&] { return Daemons().size() == 2; }));
    const auto now = Daemons();
    EXPECT_EQ(now.at(worker_ + " 1"), before.at(worker_ + " 1"));
    EXPECT_TRUE(WaitUntil([] { return ProcessesNamed("no_windows.exe").size() == 2; }));
}

TEST_F(Guard, Order_to_exit_ends_the_guard_too_and_the_daemons_run_on)
{
    const auto before = StartFleet(2);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended on an order: "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Guard ends"), "");
    EXPECT_TRUE(WaitUntil([] { return ProcessesNamed("DaemonGuard.exe").empty(); }));
    EXPECT_TRUE(ProcessesNamed("DaemonManager.exe").empty());
    for (const auto& [command, process] : before) {
        EXPECT_TRUE(IsRunning(process)) << command;
    }
    // The next guard takes them over.
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_EQ(Daemons(), before);
}

TEST_F(Guard, Guard_that_is_started_beside_a_supervisor_watches_it_and_changes_nothing)
{
    const auto before = StartFleet(2);
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    machine_.KillGuard();
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_NE(
        machine_.WaitForGuardLog("Supervisor runs already: process " + std::to_string(supervisor)),
        "");
    EXPECT_EQ(GuardedMachine::WaitForSupervisor(), supervisor);
    EXPECT_EQ(Daemons(), before);
    KillProcess(supervisor);
    ASSERT_TRUE(machine_.WaitForTakeOver(3));
    EXPECT_EQ(Daemons(), before);
}

TEST_F(Guard, Second_guard_refuses_to_run)
{
    StartFleet(1);
    CapturedProgram& second = machine_.StartGuard();
    EXPECT_EQ(second.ExitCode(), 4U);
    EXPECT_EQ(second.Error(), "DaemonGuard: another guard runs: it holds " + machine_.Root() +
                                  "\\Logs\\DaemonGuard.lock\n");
    EXPECT_EQ(ProcessesNamed("DaemonManager.exe").size(), 1U);
}

TEST_F(Guard, Supervisor_that_cannot_start_is_tried_again_after_growing_waits)
{
    std::filesystem::remove(machine_.App());
    machine_.StartGuard();
    for (const char* wait : {"0", "1", "2", "4"}) {
        EXPECT_NE(
            machine_.WaitForGuardLog(std::string("Next start of the supervisor in ") + wait + " s"),
            "");
    }
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended without an order: ", 4), "");
    std::filesystem::create_directory(machine_.App());
    EXPECT_TRUE(machine_.WaitForTakeOver());
}

TEST_F(Guard, Fleet_file_with_faults_launches_nothing_and_the_log_names_the_lines)
{
    machine_.WriteFleet(worker_ + " 1\n\"x\n");
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: " + machine_.App() +
                                       "\\fleet.txt, line 2: a double quote is not closed"),
              "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: nothing was launched"), "");
    EXPECT_TRUE(Daemons().empty());
}

TEST_F(Guard, Log_that_others_may_write_hands_nothing_over_unless_the_guard_trusts_it)
{
    const auto before = StartFleet(2);
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    machine_.KillGuard();
    KillProcess(supervisor);
    std::filesystem::remove(machine_.App() + "\\fleet.txt");
    OpenToAll(machine_.SupervisorLog());
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_TRUE(
        machine_.WaitForGuardLog("Hand-over: does not believe a file that others may write: ")
            .ends_with("may write to " + machine_.SupervisorLog()));
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: nothing was attached. When only administrators "
                                       "may write the log, start the guard again"),
              "");
    machine_.KillGuard();
    machine_.StartGuard("--trust");
    ASSERT_TRUE(machine_.WaitForTakeOver(3));
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: believes a file that others may write: "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 2 attached, 0 already, 0 not"), "");
    EXPECT_EQ(Daemons(), before);
}

TEST_F(Guard, Fleet_file_that_others_may_write_launches_nothing_unless_the_guard_trusts_it)
{
    const std::string fleet = machine_.App() + "\\fleet.txt";
    machine_.WriteFleet(worker_ + " 1\n");
    OpenToAll(fleet);
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_TRUE(machine_.WaitForGuardLog("Fleet: does not believe a file that others may write: ")
                    .ends_with("may write to " + fleet));
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: nothing was launched"), "");
    EXPECT_TRUE(Daemons().empty());
    machine_.KillGuard();
    machine_.StartGuard("--trust");
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: believes a file that others may write: "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 1 launched, 0 attached, 0 there already, 0 not"),
              "");
}

TEST_F(Guard, Folder_of_the_logs_that_the_guard_makes_is_for_administrators_alone)
{
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const std::string list = AccessListOf(machine_.Root() + "\\Logs");
    for (const char* others : {";;;WD)", ";;;BU)", ";;;AU)"}) {
        EXPECT_EQ(list.find(others), std::string::npos) << list;
    }
}

TEST_F(Guard, Empty_and_missing_fleet_files_are_reported_and_the_supervisor_runs)
{
    machine_.WriteFleet("");
    machine_.StartGuard();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: " + machine_.App() +
                                       "\\fleet.txt, the list names no program"),
              "");
    machine_.KillGuard();
    machine_.StartGuard("--fleet C:\\no\\such.txt");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: C:\\no\\such.txt, C:\\no\\such.txt cannot be read"),
              "");
    machine_.KillGuard();
    std::filesystem::remove(machine_.App() + "\\fleet.txt");
    machine_.StartGuard();
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: there is no " + machine_.App() + "\\fleet.txt"), "");
    EXPECT_TRUE(Daemons().empty());
}

TEST(GuardUsage, Wrong_arguments_end_with_exit_code_2_and_show_the_usage)
{
    const CapturedProgram guard('"' + ProductProgram("DaemonGuard.exe") + "\" --frobnicate");
    EXPECT_EQ(guard.ExitCode(), 2U);
    EXPECT_NE(guard.Error().find("Usage: DaemonGuard.exe --service | --session [--fleet FILE] "
                                 "[--trust]"),
              std::string::npos);
}

} // namespace
} // namespace vqrx::test
