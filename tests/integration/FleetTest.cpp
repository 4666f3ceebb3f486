// daemonctl apply, with the real supervisor.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "OpenToAll.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "TestService.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

constexpr const char* kNothingDone =
    "daemonctl: nothing was done\n"
    "  For the form of a fleet file, with an example: daemonctl apply --help\n";

class Fleet : public ::testing::Test {
protected:
    // Writes a fleet file and returns its path.
    std::string File(const std::string& text) const { return supervisor_.Write("fleet.txt", text); }

    // Returns the commands of all daemons, in the order of their ids.
    static std::vector<std::string> Commands()
    {
        std::vector<std::string> commands;
        for (const auto& daemon : ListedDaemons()) {
            commands.push_back(daemon.at("command"));
        }
        return commands;
    }

    using Lines = std::vector<std::string>;
    const PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    const std::string worker_ = TestProgram("no_windows");
    SupervisorProcess supervisor_;
};

// The supervisor starts what the file names with its own rights.
TEST_F(Fleet, Apply_refuses_a_file_that_others_may_write)
{
    const std::string file = File(worker_ + " 1\r\n");
    OpenToAll(file);
    const Answer answer = Daemonctl("apply " + file);
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output, "");
    EXPECT_NE(answer.error.find("may write to " + file + "\n"), std::string::npos) << answer;
    EXPECT_NE(answer.error.find("daemonctl: nothing was done: others than administrators may have "
                                "written which programs to launch\n"),
              std::string::npos)
        << answer;
    EXPECT_EQ(Commands(), Lines());
    EXPECT_EQ(Daemonctl("apply --dry-run " + file).exitCode, 1U); // does nothing, so it may
    EXPECT_EQ(Daemonctl("apply --trust " + file).exitCode, 0U);
    EXPECT_NE(supervisor_.WaitForStart(0), 0U);
}

// Otherwise somebody could replace the file that was read by one that is sound.
TEST_F(Fleet, Apply_checks_a_file_before_it_reads_the_file)
{
    const std::string file = File("\"x\r\n");
    EXPECT_EQ(Daemonctl("apply " + file).exitCode, 2U);
    OpenToAll(file);
    EXPECT_EQ(Daemonctl("apply " + file).exitCode, 4U);
}

TEST_F(Fleet, Apply_launches_what_is_missing_and_a_second_apply_changes_nothing)
{
    EXPECT_EQ(Daemonctl("launch \"" + worker_ + "\" 1").exitCode, 0U);
    const std::string first = std::to_string(supervisor_.WaitForStart(0));
    const std::string file =
        File("# all\r\n" + worker_ + " 1\r\n" + worker_ + " \"two words\"\r\n");
    EXPECT_EQ(Daemonctl("apply --dry-run " + file),
              (Answer{1,
                      "there already     " + worker_ + " 1: daemon 0, process " + first +
                          "\nwould launch      " + worker_ +
                          " \"two words\"\n1 to launch, 0 to attach, 1 there already, 0 not\n",
                      ""}));
    EXPECT_EQ(Daemonctl("apply " + file),
              (Answer{0,
                      "there already     " + worker_ + " 1: daemon 0, process " + first +
                          "\nlaunched          " + worker_ +
                          " \"two words\": daemon 1\n"
                          "1 launched, 0 attached, 1 there already, 0 not\n",
                      ""}));
    const std::string second = std::to_string(supervisor_.WaitForStart(1));
    EXPECT_EQ(Daemonctl("apply " + file),
              (Answer{0,
                      "there already     " + worker_ + " 1: daemon 0, process " + first +
                          "\nthere already     " + worker_ + " \"two words\": daemon 1, process " +
                          second + "\n0 launched, 0 attached, 2 there already, 0 not\n",
                      ""}));
    EXPECT_EQ(Commands(), (Lines{worker_ + " 1", worker_ + " two words"}));
    EXPECT_EQ(Daemonctl("check --expect " + file).exitCode, 0U);
}

TEST_F(Fleet, Apply_does_not_launch_an_attached_daemon_again)
{
    const ChildProcess child('"' + worker_ + "\" 1");
    EXPECT_EQ(Daemonctl("attach " + std::to_string(child.Pid())).exitCode, 0U);
    ASSERT_TRUE(supervisor_.WaitForLog(2, "Attach DaemonId(0) PId(" + std::to_string(child.Pid()) +
                                              ") : " + worker_ + " 1 "));
    const std::string file = File(worker_ + " 1\n");
    EXPECT_EQ(Daemonctl("apply " + file),
              (Answer{0,
                      "attached already  " + worker_ + " 1: daemon 0, process " +
                          std::to_string(child.Pid()) +
                          "\n0 launched, 0 attached, 1 there already, 0 not\n",
                      ""}));
    EXPECT_EQ(Commands(), Lines{worker_ + " 1"});
}

TEST_F(Fleet, Apply_with_prune_stops_what_the_file_does_not_name)
{
    const ChildProcess attached('"' + worker_ + "\" 1");
    EXPECT_EQ(Daemonctl("attach " + std::to_string(attached.Pid())).exitCode, 0U);
    EXPECT_EQ(Daemonctl("launch \"" + worker_ + "\" 2").exitCode, 0U);
    const DWORD launched = supervisor_.WaitForStart(1);
    const std::string file = File(worker_ + " 3\n");
    const std::string pid = std::to_string(attached.Pid());
    EXPECT_EQ(Daemonctl("apply --prune --dry-run " + file),
              (Answer{1,
                      "would stop        " + worker_ + " 1: daemon 0, process " + pid +
                          "\nwould stop        " + worker_ + " 2: daemon 1, process " +
                          std::to_string(launched) + "\nwould launch      " + worker_ +
                          " 3\n1 to launch, 0 to attach, 0 there already, 2 to stop, 0 not\n",
                      ""}));
    EXPECT_EQ(
        Daemonctl("apply --prune " + file),
        (Answer{0,
                "daemon 0 stopped: process " + pid +
                    " terminated\ndaemon 1 stopped\nlaunched          " + worker_ +
                    " 3: daemon 2\n1 launched, 0 attached, 0 there already, 2 stopped, 0 not\n",
                ""}));
    EXPECT_TRUE(attached.Wait());
    EXPECT_NE(supervisor_.WaitForStart(2), 0U);
    EXPECT_EQ(Commands(), Lines{worker_ + " 3"});
}

TEST_F(Fleet, Apply_ends_with_the_supervisor)
{
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("signals_quit") + "\" " + ready.Name() + " " +
                        quit.Name() + " " + mayEnd.Name())
                  .exitCode,
              0U);
    EXPECT_EQ(Daemonctl("launch \"" + worker_ + "\" 1").exitCode, 0U);
    EXPECT_NE(supervisor_.WaitForStart(1), 0U);
    ASSERT_TRUE(ready.Wait());
    const std::string file = File(worker_ + " 2\n" + worker_ + " 3\n");
    const CapturedProgram apply('"' + ProductProgram("daemonctl.exe") + "\" apply --prune " + file);
    ASSERT_TRUE(quit.Wait()); // the first of two stops is under way
    EXPECT_TRUE(supervisor_.Terminate());
    EXPECT_EQ(apply.ExitCode(), 3U);
    EXPECT_EQ(apply.Output(), "");
    EXPECT_NE(apply.Error().find("\ndaemonctl: the supervisor has ended: stop: 0x"),
              std::string::npos)
        << apply.Error();
    EXPECT_EQ(apply.Error().find("daemon 1"), std::string::npos) << apply.Error();
}

TEST_F(Fleet, Apply_attaches_a_process_that_runs_unwatched)
{
    // cmd starts the worker and ends, so no running process is the parent of the worker.
    const CapturedProgram shell("cmd /d /c start /b \"\" \"" + worker_ + "\" 1");
    EXPECT_EQ(shell.ExitCode(), 0U);
    const std::string file = File(worker_ + " 1\n");
    EXPECT_EQ(Daemonctl("apply --dry-run " + file).exitCode, 1U);
    const Answer answer = Daemonctl("apply " + file);
    EXPECT_EQ(answer.exitCode, 0U) << answer;
    EXPECT_TRUE(
        answer.output.starts_with("attached          " + worker_ + " 1: daemon 0, process "))
        << answer;
    EXPECT_EQ(Commands(), Lines{worker_ + " 1"});
}

// As beside a guard: both would find a process that nobody supervises, and both would attach it.
TEST_F(Fleet, Apply_waits_until_another_program_has_applied)
{
    system::win32::v1::UniqueKernelHandle other(
        CreateFileA((supervisor_.Root() + "\\Logs\\DaemonManager.lock").c_str(), GENERIC_WRITE, 0,
                    nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    ASSERT_TRUE(other);
    const std::string file = File(worker_ + " 1\n");
    const CapturedProgram apply('"' + ProductProgram("daemonctl.exe") + "\" apply " + file);
    EXPECT_TRUE(WaitUntil([&] {
        return apply.Error() == "daemonctl: waiting until another program has handed daemons over "
                                "or applied a fleet file\n";
    }));
    EXPECT_EQ(Daemonctl("apply --dry-run " + file).exitCode, 1U); // it changes nothing
    EXPECT_EQ(Commands(), Lines());
    other.Reset();
    EXPECT_EQ(apply.ExitCode(), 0U);
    EXPECT_NE(supervisor_.WaitForStart(0), 0U);
    EXPECT_EQ(Commands(), Lines{worker_ + " 1"});
}

TEST_F(Fleet, Apply_starts_and_attaches_a_service_with_the_arguments_of_its_line)
{
    const TestService service("DmFleetService");
    const std::string file = File("DmFleetService -x\n");
    const Answer answer = Daemonctl("apply " + file);
    const std::string process = std::to_string(service.ProcessId());
    EXPECT_EQ(answer, (Answer{0,
                              "attached          DmFleetService -x: daemon 0, process " + process +
                                  "\n0 launched, 1 attached, 0 there already, 0 not\n",
                              ""}));
    EXPECT_EQ(Daemonctl("apply " + file).output,
              "attached already  DmFleetService -x: daemon 0, process " + process +
                  "\n0 launched, 0 attached, 1 there already, 0 not\n");
    // The supervisor uses the arguments when it starts the program again.
    KillProcess(service.ProcessId());
    EXPECT_NE(supervisor_.WaitForStart(0, static_cast<DWORD>(std::stoul(process))), 0U);
}

TEST_F(Fleet, Apply_of_a_file_with_bad_lines_does_nothing)
{
    const std::string file = File(worker_ + " 1\n\"x\nno_such_program.exe\n");
    EXPECT_EQ(
        Daemonctl("apply " + file),
        (Answer{2, "",
                "daemonctl: " + file + ", line 2: a double quote is not closed\n" + kNothingDone}));
    const std::string second = File(worker_ + " 1\nno_such_program.exe\n" + worker_ + " 1\n");
    EXPECT_EQ(
        Daemonctl("apply " + second),
        (Answer{2, "",
                "daemonctl: " + second + ", line 2: no_such_program.exe is neither a file in " +
                    supervisor_.App() +
                    " nor a Windows service: write its full path\n"
                    "daemonctl: " +
                    second +
                    ", line 3 repeats line 1: the supervisor runs one daemon for a program "
                    "with the same arguments\n" +
                    kNothingDone}));
    EXPECT_EQ(Commands(), Lines{});
}

TEST_F(Fleet, Apply_of_a_file_with_refused_arguments_does_nothing)
{
    const std::string file = File(worker_ + " 1\n" + worker_ + " \"\"\n");
    const Answer refused{2, "",
                         "daemonctl: " + file +
                             ", line 2: argument 1 is empty and would disappear\n" + kNothingDone};
    EXPECT_EQ(Daemonctl("apply --dry-run " + file), refused);
    EXPECT_EQ(Daemonctl("apply " + file), refused);
    EXPECT_EQ(Commands(), Lines{});
}

TEST_F(Fleet, Apply_warns_of_a_program_that_does_not_exist)
{
    const std::string file = File("C:\\no\\such.exe\n");
    EXPECT_EQ(Daemonctl("apply " + file),
              (Answer{0,
                      "launched          C:\\no\\such.exe: daemon 0\n"
                      "1 launched, 0 attached, 0 there already, 0 not\n",
                      "daemonctl: line 1: C:\\no\\such.exe does not exist; the supervisor tries "
                      "every second to start it\n"}));
    ASSERT_TRUE(supervisor_.WaitForLog(1, "Unable to start C:\\no\\such.exe "));
    // The log shows no id of such a daemon; apply finds it nevertheless, and registers nothing
    // twice.
    EXPECT_EQ(Daemonctl("apply " + file).output,
              "there already     C:\\no\\such.exe: daemon 0\n"
              "0 launched, 0 attached, 1 there already, 0 not\n");
}

} // namespace
} // namespace vqrx::test
