// What daemonctl reattach and ps do after the supervisor was killed: daemons without a record in
// the log, programs that never ran, services, and no supervisor at all.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "PrefixClass.h"
#include "SupervisorElsewhere.h"
#include "SupervisorProcess.h"
#include "TestService.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

class HandOver : public ::testing::Test {
protected:
    // Launches the worker with an argument. Returns the id of its process.
    DWORD Launch(const std::string& argument)
    {
        const auto answer =
            former_.Client().Launch(std::wstring(worker_.begin(), worker_.end()),
                                    {std::wstring(argument.begin(), argument.end())});
        const DWORD process = former_.WaitForStart(answer.daemonId);
        reaper_.Note(process);
        return process;
    }

    // Waits until the log shows so many attached processes: a supervisor that is killed loses the
    // records that its logger has not written yet.
    bool WaitForAttach(std::ptrdiff_t count = 1) const
    {
        return WaitUntil([this, count] {
            const std::vector<RingRecord> log = former_.Log();
            return std::count_if(log.begin(), log.end(), [](const RingRecord& record) {
                       return record.text.starts_with("Attach ");
                   }) >= count;
        });
    }

    void KillSupervisor() { ASSERT_TRUE(former_.Terminate()); }

    void StartNew()
    {
        successor_ = std::make_unique<SupervisorProcess>(
            [this](FirmwareRegistry& registry, const std::string&) {
                registry.SetPathname(FirmwareRegistry::kCurrent, former_.Root() + "\\App\\bin");
            });
    }

    // Makes a record of the log unknown, as if the ring had overwritten it.
    void Overwrite(const std::string& record)
    {
        ASSERT_TRUE(OverwriteRecord(former_.LogFile(), record));
    }

    // Returns "process 12 (C:\...\no_windows.exe 1): ".
    std::string Name(DWORD process, const std::string& argument) const
    {
        return "process " + std::to_string(process) + " (" + worker_ + " " + argument + "): ";
    }

    const PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    const std::string worker_ = TestProgram("no_windows");
    SupervisorProcess former_;
    std::unique_ptr<SupervisorProcess> successor_;
    ProcessReaper reaper_;
};

TEST_F(HandOver, Daemon_whose_start_the_log_does_not_show_is_found_by_its_parent)
{
    const DWORD unnamed = Launch("1");
    const DWORD named = Launch("2");
    Overwrite("Start DaemonId(0)");
    KillSupervisor();
    StartNew();
    EXPECT_EQ(
        Daemonctl("reattach --outside"),
        (Answer{0,
                "daemon 1, " + Name(named, "2") + "attached as daemon 0\na former daemon, " +
                    Name(unnamed, "1") + "attached as daemon 1\n2 attached, 0 already, 0 not\n",
                ""}));
    EXPECT_EQ(Daemonctl("reattach --outside").exitCode, 1U);
}

TEST_F(HandOver, Ps_and_doctor_count_the_programs_that_run_unwatched_beside_a_new_supervisor)
{
    ASSERT_NE(Launch("1"), 0U);
    const std::string note = "program of the former supervisor runs unwatched";
    EXPECT_EQ(Daemonctl("ps").error.find(note), std::string::npos);
    KillSupervisor();
    StartNew();
    // Until the new supervisor has written its first record, the log does not show it.
    EXPECT_TRUE(WaitUntil([&] {
        return Daemonctl("ps").error == "daemonctl: 1 " + note + ": daemonctl reattach\n";
    })) << Daemonctl("ps");
    const std::string doctor = Daemonctl("doctor").output;
    EXPECT_NE(doctor.find("0 daemons, 0 in trouble\n"), std::string::npos) << doctor;
    EXPECT_NE(doctor.find("1 " + note + "\n"), std::string::npos) << doctor;
    EXPECT_EQ(Daemonctl("reattach --outside").exitCode, 0U);
    const Answer attached = Daemonctl("ps");
    EXPECT_EQ(attached.exitCode, 0U);
    EXPECT_EQ(attached.error.find(note), std::string::npos) << attached;
}

// As beside a guard: both would find that the process is no daemon, and both would attach it.
TEST_F(HandOver, Reattach_waits_until_another_program_has_handed_over)
{
    const DWORD process = Launch("1");
    KillSupervisor();
    StartNew();
    system::win32::v1::UniqueKernelHandle other(
        CreateFileA((former_.Root() + "\\Logs\\DaemonManager.lock").c_str(), GENERIC_WRITE, 0,
                    nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    ASSERT_TRUE(other);
    const CapturedProgram reattach('"' + ProductProgram("daemonctl.exe") + "\" reattach --outside");
    EXPECT_TRUE(WaitUntil([&] {
        return reattach.Error() == "daemonctl: waiting until another program has handed daemons "
                                   "over or applied a fleet file\n";
    }));
    EXPECT_EQ(reattach.Output(), "");
    other.Reset();
    EXPECT_EQ(reattach.ExitCode(), 0U);
    EXPECT_EQ(reattach.Output(), "daemon 0, " + Name(process, "1") +
                                     "attached as daemon 0\n1 attached, 0 already, 0 not\n");
}

TEST_F(HandOver, Program_that_never_ran_gets_a_line_and_is_no_failure)
{
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    ASSERT_TRUE(former_.WaitForLog(1, "Unable to start C:\\no\\such.exe "));
    const DWORD process = Launch("1");
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    StartNew();
    const std::string neverRan =
        "a former daemon (C:\\no\\such.exe): its supervisor could never start it\n";
    EXPECT_EQ(Daemonctl("reattach --outside"),
              (Answer{0,
                      "daemon 1, " + Name(process, "1") + "attached as daemon 0\n" + neverRan +
                          "1 attached, 0 already, 0 not\n",
                      ""}));
    EXPECT_EQ(Daemonctl("reattach --outside").exitCode, 1U);
}

TEST_F(HandOver, Without_a_supervisor_ps_and_reattach_dry_run_show_what_runs_unwatched)
{
    const DWORD process = Launch("1");
    const DWORD ended = Launch("2");
    KillSupervisor();
    KillProcess(ended);
    const Answer expected{
        3, "daemon 0, " + Name(process, "1") + "runs unwatched\n",
        "daemonctl: no supervisor is running on this machine\n"
        "  Start DaemonManager.exe as this user or as administrator.\n"
        "daemonctl: nobody starts these programs again. After a new supervisor has started: "
        "daemonctl reattach\n"};
    EXPECT_EQ(Daemonctl("ps"), expected);
    EXPECT_EQ(Daemonctl("reattach --dry-run"), expected);
    EXPECT_EQ(Daemonctl("ps --json").output, "");
}

TEST_F(HandOver, Arguments_of_a_service_come_from_the_fleet_file)
{
    TestService service("DmHandOverService");
    service.Start();
    const std::string process = std::to_string(service.ProcessId());
    EXPECT_EQ(Daemonctl("attach " + process + " -x").exitCode, 0U);
    ASSERT_TRUE(WaitForAttach());
    KillSupervisor();
    StartNew();
    const std::string fleet = former_.Root() + "\\fleet.txt";
    std::ofstream(fleet) << "DMHANDOVERSERVICE one \"two words\"\n";
    EXPECT_EQ(Daemonctl("reattach --outside --fleet " + fleet),
              (Answer{0,
                      "daemon 0, process " + process +
                          " (DmHandOverService): attached as daemon 0\n"
                          "1 attached, 0 already, 0 not\n",
                      ""}));
    std::ofstream(fleet) << "\"x\n";
    EXPECT_EQ(
        Daemonctl("reattach --outside --fleet " + fleet),
        (Answer{2, "",
                "daemonctl: " + fleet +
                    ", line 1: a double quote is not closed\n"
                    "  For the form of a fleet file, with an example: daemonctl apply --help\n"}));
}

// A new version may lie in another folder. Its predecessor restarts its daemons until it ends.
TEST_F(HandOver, Daemons_of_a_supervisor_of_another_folder_are_attached_only_after_its_end)
{
    SupervisorElsewhere elsewhere;
    const ChildProcess ofNoSupervisor('"' + worker_ + "\" 1"); // its parent is this test
    EXPECT_EQ(Daemonctl("attach " + std::to_string(elsewhere.Child())).exitCode, 0U);
    EXPECT_EQ(Daemonctl("attach " + std::to_string(ofNoSupervisor.Pid())).exitCode, 0U);
    ASSERT_TRUE(WaitForAttach(2));
    KillSupervisor();
    StartNew();
    const CapturedProgram reattach(ProductProgram("daemonctl.exe") + " reattach --outside");
    const std::string waiting =
        "daemonctl: waiting until the former supervisor has ended: process " +
        std::to_string(elsewhere.Pid()) + " (";
    EXPECT_TRUE(WaitUntil([&] { return reattach.Error().starts_with(waiting); }));
    EXPECT_TRUE(reattach.Running());
    elsewhere.Kill();
    EXPECT_EQ(reattach.ExitCode(), 0U) << reattach.Error();
    EXPECT_TRUE(reattach.Output().ends_with("\n2 attached, 0 already, 0 not\n"))
        << reattach.Output();
}

// The former supervisor waits for a stop, so its process runs on after the order to exit. The new
// one has a log of its own.
TEST_F(HandOver, Apply_attaches_a_program_only_after_the_former_supervisor_has_ended)
{
    Launch("1");
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("signals_quit") + "\" " + ready.Name() + " " +
                        quit.Name() + " " + mayEnd.Name()),
              (Answer{0, "1\n", ""}));
    ASSERT_TRUE(ready.Wait());
    const CapturedProgram stopping(ProductProgram("daemonctl.exe") + " stop 1");
    ASSERT_TRUE(quit.Wait());
    EXPECT_EQ(Daemonctl("exit --no-wait").exitCode, 0U);
    ASSERT_TRUE(WaitUntil([] { return !FindPublished(); }));
    successor_ = std::make_unique<SupervisorProcess>();
    const CapturedProgram apply(ProductProgram("daemonctl.exe") + " apply " +
                                former_.Write("fleet.txt", worker_ + " 1\n"));
    const std::string waiting =
        "daemonctl: waiting until the former supervisor has ended: process " +
        std::to_string(former_.Process().Pid()) + " (" + ProductProgram("DaemonManager.exe") +
        ")\n";
    EXPECT_TRUE(WaitUntil([&] { return apply.Error() == waiting; })) << apply.Error();
    EXPECT_TRUE(apply.Running());
    mayEnd.Signal();
    EXPECT_EQ(former_.ExitCode(), 0U);
    EXPECT_EQ(apply.ExitCode(), 0U) << apply.Error();
    EXPECT_TRUE(apply.Output().ends_with("\n0 launched, 1 attached, 0 there already, 0 not\n"))
        << apply.Output();
}

} // namespace
} // namespace vqrx::test
