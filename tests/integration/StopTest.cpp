// daemonctl stop and restart, of launched and of attached daemons.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "OpenToAll.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "TestService.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

class Stop : public ::testing::Test {
protected:
    // Launches a program and waits for its process. Returns the id of the process.
    DWORD Launch(const std::string& program, const std::string& argument)
    {
        EXPECT_EQ(Daemonctl("launch \"" + program + "\" " + argument),
                  (Answer{0, std::to_string(launched_) + "\n", ""}));
        return supervisor_.WaitForStart(launched_++);
    }

    // Attaches a process, which becomes the next daemon.
    void Attach(const ChildProcess& child)
    {
        EXPECT_EQ(Daemonctl("attach " + std::to_string(child.Pid())),
                  (Answer{0, std::to_string(launched_++) + "\n", ""}));
    }

    // Returns the number of daemons that ps shows.
    static std::size_t Listed() { return ListedDaemons().size(); }

    const PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    const std::string worker_ = TestProgram("no_windows");
    SupervisorProcess supervisor_;

private:
    DWORD launched_ = 0;
};

TEST_F(Stop, takes_several_ids_and_the_names_of_programs)
{
    const DWORD first = Launch(worker_, "1");
    const DWORD second = Launch(worker_, "2");
    const DWORD other = Launch(TestProgram("exits_with"), "259"); // it is never started again
    EXPECT_EQ(Daemonctl("stop 2 NO_WINDOWS.exe nobody.exe 9"),
              (Answer{1, "daemon 2 stopped\ndaemon 0 stopped\ndaemon 1 stopped\n",
                      "daemonctl: no daemon runs nobody.exe\n"
                      "daemonctl: no process was stopped: daemon 9 is unknown, was attached (its "
                      "process runs on), or cannot be ended\n"
                      "  To see all daemons: daemonctl ps\n"}));
    for (const DWORD process : {first, second, other}) {
        EXPECT_TRUE(WaitUntil([process] { return !IsRunning(process); }));
    }
    EXPECT_EQ(Daemonctl("stop --all"),
              (Answer{1, "", "daemonctl: the supervisor has no daemons\n"}));
}

TEST_F(Stop, of_an_attached_daemon_leaves_its_process_and_the_log_shows_it)
{
    const ChildProcess child('"' + worker_ + "\" 1");
    Attach(child);
    EXPECT_EQ(Daemonctl("stop 0"), (Answer{0, "daemon 0 detached, its process runs on\n", ""}));
    EXPECT_TRUE(supervisor_.WaitForLog(
        1, "Detached DaemonId(0) PId(" + std::to_string(child.Pid()) + ") : " + worker_ + " 1 "));
    EXPECT_TRUE(child.Running());
    EXPECT_EQ(Listed(), 0U);
}

TEST_F(Stop, ends_the_process_of_an_attached_daemon_in_the_steps_of_the_supervisor)
{
    const ReadyEvent ready;
    const ChildProcess quits('"' + TestProgram("quits") + "\" " + ready.Name());
    const ChildProcess worker('"' + worker_ + "\" 1");
    ASSERT_TRUE(ready.Wait());
    Attach(quits);
    Attach(worker);
    const std::string quitsId = std::to_string(quits.Pid());
    EXPECT_EQ(Daemonctl("stop 0 --end"),
              (Answer{0, "daemon 0 stopped: process " + quitsId + " ended after the quit message\n",
                      "daemonctl: waiting at most 30 s until daemon 0, process " + quitsId +
                          " has ended\n"}));
    EXPECT_FALSE(quits.Running());
    EXPECT_EQ(
        Daemonctl("stop --all --end"),
        (Answer{0, "daemon 1 stopped: process " + std::to_string(worker.Pid()) + " terminated\n",
                ""}));
    EXPECT_FALSE(worker.Running());
    EXPECT_EQ(Listed(), 0U);
    // Nobody starts the programs again: two more passes leave the log as it is.
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    ASSERT_TRUE(supervisor_.WaitForLog(1, "Unable to start C:\\no\\such.exe ", 2));
    for (const RingRecord& record : supervisor_.Log()) {
        EXPECT_FALSE(record.text.starts_with("Start ")) << record;
    }
}

// Only the log says which process an attached daemon has.
TEST_F(Stop, ends_no_process_that_a_log_names_which_others_may_write)
{
    const ChildProcess child('"' + worker_ + "\" 1");
    Attach(child);
    const DWORD launched = Launch(worker_, "2");
    OpenToAll(supervisor_.LogFile());
    const Answer answer = Daemonctl("stop 0 --end");
    EXPECT_EQ(answer.exitCode, 1U) << answer;
    EXPECT_EQ(answer.output, "");
    EXPECT_NE(answer.error.find("may write to " + supervisor_.LogFile() + ", so somebody may have"),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.error.find("taskkill /f /pid " + std::to_string(child.Pid())),
              std::string::npos)
        << answer;
    EXPECT_EQ(Daemonctl("restart 0").exitCode, 1U);
    EXPECT_TRUE(child.Running());
    EXPECT_EQ(Listed(), 2U); // it is not detached either
    // The supervisor has started the other process itself.
    EXPECT_EQ(Daemonctl("restart 1").exitCode, 0U);
    EXPECT_TRUE(WaitUntil([launched] { return !IsRunning(launched); }));
}

TEST_F(Stop, finds_the_process_that_an_attached_daemon_has_now)
{
    const ChildProcess child('"' + worker_ + "\" 1");
    Attach(child);
    child.Kill();
    const DWORD restarted = supervisor_.WaitForStart(0, child.Pid());
    ASSERT_NE(restarted, 0U);
    EXPECT_EQ(Daemonctl("stop 0 --end"),
              (Answer{0, "daemon 0 stopped: process " + std::to_string(restarted) + " terminated\n",
                      ""}));
    EXPECT_FALSE(IsRunning(restarted));
}

TEST_F(Stop, announces_the_wait_for_a_launched_program_with_a_window)
{
    const ReadyEvent ready;
    const std::string program = TestProgram("quits");
    const DWORD process = Launch(program, ready.Name());
    ASSERT_TRUE(ready.Wait());
    EXPECT_EQ(Daemonctl("stop 0"),
              (Answer{0, "daemon 0 stopped\n",
                      "daemonctl: waiting at most 30 s until daemon 0, process " +
                          std::to_string(process) + " (" + program + " " + ready.Name() +
                          ") has ended\n"}));
}

TEST_F(Stop, does_not_end_the_process_of_a_Windows_service)
{
    TestService service("DmStopService");
    service.Start();
    const DWORD process = service.ProcessId();
    const std::string id = std::to_string(process);
    EXPECT_EQ(Daemonctl("attach " + id), (Answer{0, "0\n", ""}));
    ASSERT_TRUE(supervisor_.WaitForLog(2, "Attach DaemonId(0) PId(" + id + ") : DmStopService"));
    const std::string refusal =
        "daemon 0, process " + id +
        " (DmStopService): a Windows service is not ended by force. To stop it: daemonctl detach 0, "
        "then sc stop DmStopService\n";
    EXPECT_EQ(Daemonctl("stop 0 --end"), (Answer{1, "", "daemonctl: " + refusal}));
    EXPECT_EQ(Daemonctl("restart 0"), (Answer{1, "", "daemonctl: " + refusal}));
    EXPECT_EQ(service.ProcessId(), process);
    EXPECT_EQ(Listed(), 1U);
    EXPECT_EQ(Daemonctl("stop 0 --leave"),
              (Answer{0, "daemon 0 detached, its process runs on\n", ""}));
}

TEST_F(Stop, by_id_works_without_a_readable_log)
{
    const DWORD process = Launch(worker_, "1");
    std::ofstream(supervisor_.LogFile(), std::ios::binary | std::ios::trunc) << "no log";
    EXPECT_EQ(Daemonctl("stop 0"), (Answer{0, "daemon 0 stopped\n", ""}));
    EXPECT_TRUE(WaitUntil([process] { return !IsRunning(process); }));
}

TEST_F(Stop, Restart_ends_processes_and_waits_until_the_supervisor_has_started_them_again)
{
    const DWORD launched = Launch(worker_, "1");
    const ChildProcess attached('"' + worker_ + "\" 2");
    Attach(attached);
    const Answer answer = Daemonctl("restart --all --timeout 30");
    const DWORD first = supervisor_.WaitForStart(0, launched);
    const DWORD second = supervisor_.WaitForStart(1, attached.Pid());
    const std::string waiting =
        "daemonctl: waiting at most 30 s until the supervisor has started daemon ";
    EXPECT_EQ(answer,
              (Answer{0,
                      "daemon 0 restarted: process " + std::to_string(launched) +
                          " terminated, now process " + std::to_string(first) +
                          "\ndaemon 1 restarted: process " + std::to_string(attached.Pid()) +
                          " terminated, now process " + std::to_string(second) + "\n",
                      waiting + "0\n" + waiting + "1\n"}));
    EXPECT_EQ(Listed(), 2U);
    EXPECT_EQ(Daemonctl("restart 7"),
              (Answer{1, "",
                      "daemonctl: daemon 7 is unknown: the log does not show it\n"
                      "  To see all daemons: daemonctl ps\n"}));
}

TEST_F(Stop, Restart_reports_a_program_that_is_not_started_again)
{
    const DWORD process = Launch(TestProgram("exits_with"), "259");
    ASSERT_TRUE(WaitUntil([process] { return !IsRunning(process); }));
    EXPECT_EQ(Daemonctl("restart exits_with.exe --timeout 0"),
              (Answer{1, "",
                      "daemonctl: waiting at most 0 s until the supervisor has started daemon 0\n"
                      "daemonctl: daemon 0: it had no process; the supervisor has not started it "
                      "again within 0 s\n"
                      "  To see what happened: daemonctl log --tail 10 --daemon 0\n"}));
}

} // namespace
} // namespace vqrx::test
