// The commands of daemonctl that call the real supervisor: launch, stop, attach, detach and exit.
#include "Daemonctl.h"
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "ProxyRegistration.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

TEST(Daemonctl, A_missing_or_wrong_command_ends_with_exit_code_2_and_an_error_text)
{
    for (const char* arguments : {"",
                                  "frobnicate",
                                  "launch",
                                  "stop",
                                  "stop x",
                                  "stop -1",
                                  "stop 0x10",
                                  "stop 4294967296",
                                  "stop 1 --all",
                                  "stop 1 --end --leave",
                                  "stop C:\\a.exe",
                                  "restart",
                                  "restart x",
                                  "restart 1 --timeout x",
                                  "attach",
                                  "attach pid",
                                  "detach",
                                  "exit now",
                                  "exit --timeout x",
                                  "exit --no-wait --timeout 1",
                                  "--frobnicate"}) {
        const Answer answer = Daemonctl(arguments);
        EXPECT_EQ(answer.exitCode, 2U) << arguments;
        EXPECT_EQ(answer.output, "") << arguments;
        EXPECT_NE(answer.error, "") << arguments;
    }
}

TEST(Daemonctl, The_option_version_shows_the_version)
{
    EXPECT_EQ(Daemonctl("--version"), (Answer{0, "daemonctl 1.0.0\n", ""}));
}

// The commands that the help of the program lists, by their first names.
std::vector<std::string> ListedCommands(const std::string& help)
{
    std::vector<std::string> commands;
    std::istringstream lines(help.substr(help.find("Subcommands:\n")));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && line.starts_with("  ")) {
        commands.push_back(line.substr(2, line.find_first_of(" ,", 2) - 2));
    }
    return commands;
}

TEST(Daemonctl, The_help_of_every_command_shows_an_example)
{
    const Answer help = Daemonctl("--help");
    EXPECT_EQ(help.exitCode, 0U);
    EXPECT_EQ(help.error, "");
    const std::vector<std::string> commands = ListedCommands(help.output);
    EXPECT_LE(20U, commands.size()) << help.output;
    for (const std::string& command : commands) {
        const Answer commandHelp = Daemonctl(command + " --help");
        EXPECT_EQ(commandHelp.exitCode, 0U) << command;
        const std::size_t footer = commandHelp.output.find("\nExample");
        ASSERT_NE(footer, std::string::npos) << commandHelp.output;
        EXPECT_NE(commandHelp.output.find("\n  daemonctl " + command, footer), std::string::npos)
            << commandHelp.output;
    }
}

TEST(Daemonctl, Commands_without_a_supervisor_print_how_to_start_it)
{
    for (const char* arguments :
         {"launch x.exe", "stop 1", "restart 1", "attach 1", "detach 1", "exit"}) {
        EXPECT_EQ(Daemonctl(arguments),
                  (Answer{3, "",
                          "daemonctl: no supervisor is running on this machine\n"
                          "  Start DaemonManager.exe as this user or as administrator.\n"}))
            << arguments;
    }
}

TEST(Daemonctl, Commands_without_the_proxy_print_how_to_register_it)
{
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, root.Path().string());
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor(ProductProgram("DaemonManager.exe"));
    ASSERT_TRUE(WaitUntil([] { return static_cast<bool>(FindPublished()); }));
    for (const char* command : {"exit", "wait --for supervisor"}) {
        EXPECT_EQ(Daemonctl(command),
                  (Answer{3, "",
                          "daemonctl: the supervisor runs, but DaemonMgrPS.dll is not registered\n"
                          "  As administrator: regsvr32 \"" +
                              ProductProgram("DaemonMgrPS.dll") + "\"\n"}))
            << command;
    }
    const ProxyRegistration registered;
    EXPECT_EQ(Daemonctl("exit"), (Answer{0, "the supervisor has ended; it had no daemons\n", ""}));
    EXPECT_FALSE(supervisor.Running());
    const std::string log = (root.Path() / "Logs" / "DaemonManager.log").string();
    EXPECT_EQ(OrderlyExitCode(supervisor, log), 0U);
}

TEST(Daemonctl, Launch_and_Stop_report_the_result_of_the_call)
{
    const SupervisorProcess supervisor;
    const std::string launch = "launch \"" + TestProgram("no_windows") + "\" x";
    EXPECT_EQ(Daemonctl(launch), (Answer{0, "0\n", ""}));
    EXPECT_EQ(Daemonctl(launch),
              (Answer{1, "0\n", "daemonctl: registered already, as daemon 0\n"}));
    EXPECT_NE(supervisor.WaitForStart(0), 0U);
    EXPECT_EQ(Daemonctl("detach 0"), (Answer{1, "",
                                             "daemonctl: daemon 0 is unknown or was not attached\n"
                                             "  To see all daemons: daemonctl ps\n"}));
    EXPECT_EQ(Daemonctl("stop 0"), (Answer{0, "daemon 0 stopped\n", ""}));
    EXPECT_EQ(Daemonctl("stop 0"),
              (Answer{1, "",
                      "daemonctl: no process was stopped: daemon 0 is unknown, was attached (its "
                      "process runs on), or cannot be ended\n"
                      "  To see all daemons: daemonctl ps\n"}));
}

TEST(Daemonctl, Launch_warns_of_a_path_that_cannot_be_started)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(
        Daemonctl("launch C:\\no\\such.exe"),
        (Answer{0, "0\n",
                "daemonctl: warning: C:\\no\\such.exe does not exist; the supervisor tries to "
                "start it every second\n"
                "  To undo this: daemonctl stop 0\n"}));
    EXPECT_EQ(Daemonctl("launch \"\"").exitCode, 2U);
    const Answer relative = Daemonctl("launch such.exe");
    EXPECT_EQ(relative.exitCode, 0U);
    EXPECT_NE(
        relative.error.find("\"such.exe\" is no full path, so the supervisor looks for it in " +
                            supervisor.App()),
        std::string::npos)
        << relative;
}

TEST(Daemonctl, Launch_with_wait_answers_whether_the_program_runs)
{
    const SupervisorProcess supervisor;
    const Answer runs = Daemonctl("launch --wait 20 \"" + TestProgram("no_windows") + "\" x");
    const std::string process = std::to_string(supervisor.WaitForStart(0));
    EXPECT_EQ(runs, (Answer{0, "0\ndaemon 0 runs as process " + process + "\n", ""}));
    const Answer ends = Daemonctl("launch --wait 3 \"" + TestProgram("exits_with") + "\" 3");
    EXPECT_EQ(ends.exitCode, 1U) << ends;
    EXPECT_EQ(ends.output, "1\n");
    EXPECT_EQ(ends.error.find("daemonctl: daemon 1 has not run for 2 s after 3 s: "), 0U) << ends;
}

TEST(Daemonctl, Launch_passes_every_argument_after_the_path_to_the_daemon)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("writes_command_line");
    EXPECT_EQ(
        Daemonctl(
            "launch --raw \"" + program +
            "\" out.txt --help -x -- --version \"two words\" \"\" \xC3\xBC --listen [::1] [a,b] []"),
        (Answer{0, "0\n", ""}));
    EXPECT_EQ(
        WaitForNote(supervisor.App() + "\\out.txt"),
        program +
            " out.txt --help -x -- --version \"two words\"  \xC3\xBC --listen [::1] [a,b] [] ");
}

TEST(Daemonctl, Launch_and_attach_refuse_arguments_that_the_program_would_get_changed)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("writes_command_line");
    const auto refused = [](const std::string& reason) {
        return Answer{
            2, "",
            "daemonctl: " + reason +
                "\n  To send it as it is: --raw directly after the name of the command\n"};
    };
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" out.txt \"\""),
              refused("argument 2 is empty and would disappear"));
    EXPECT_EQ(Daemonctl("attach 4294967280 \"a\\\"b\""),
              refused("argument 1 contains a double quote, which would change the arguments"));
    EXPECT_EQ(Daemonctl("launch C:\\x.bat \"a&b\""),
              refused("argument 1 contains a character that the command interpreter acts upon, and "
                      "the program is a batch file"));
    EXPECT_EQ(Daemonctl("attach --raw 4294967280 \"a\\\"b\"").exitCode, 1U); // no such process
    EXPECT_EQ(Daemonctl("launch --raw C:\\x.bat \"a&b\"").exitCode, 0U);
    EXPECT_TRUE(supervisor.WaitForLog(1, "Unable to start C:\\x.bat a&b "));
}

TEST(Daemonctl, Attach_reports_a_process_that_cannot_be_attached)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(
        Daemonctl("attach 4294967280"),
        (Answer{1, "",
                "daemonctl: process 4294967280 could not be attached: it has ended, access to "
                "it is denied, or WMI does not know it\n"
                "  To see the messages of the supervisor: daemonctl log --tail 5\n"}));
}

// A supervisor whose shutdown waits for a stop: the daemon with the id 0 ends when the test says
// so.
class DaemonctlExit : public ::testing::Test {
protected:
    DaemonctlExit()
    {
        EXPECT_EQ(Daemonctl("launch \"" + TestProgram("signals_quit") + "\" " + ready_.Name() +
                            " " + quit_.Name() + " " + mayEnd_.Name())
                      .exitCode,
                  0U);
        EXPECT_TRUE(ready_.Wait());
        stopping_ = std::make_unique<CapturedProgram>(ProductProgram("daemonctl.exe") + " stop 0");
        EXPECT_TRUE(quit_.Wait());
    }

    const ReadyEvent ready_;
    const ReadyEvent quit_;
    const ReadyEvent mayEnd_;
    SupervisorProcess supervisor_;
    std::unique_ptr<CapturedProgram> stopping_;
};

TEST_F(DaemonctlExit, returns_after_the_process_of_the_supervisor_has_ended)
{
    const CapturedProgram exit(ProductProgram("daemonctl.exe") + " exit");
    ASSERT_TRUE(WaitUntil([] { return !FindPublished(); })); // The shutdown has begun.
    EXPECT_TRUE(exit.Running());
    mayEnd_.Signal();
    EXPECT_EQ(exit.ExitCode(), 0U);
    EXPECT_FALSE(supervisor_.Process().Running());
    EXPECT_EQ(exit.Output(), "the supervisor has ended; it had no daemons\n");
    EXPECT_EQ(supervisor_.ExitCode(), 0U);
}

TEST_F(DaemonctlExit, names_what_is_under_way_and_ends_with_4_after_the_timeout)
{
    const Answer answer = Daemonctl("exit --timeout 0");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output, "");
    EXPECT_EQ(
        answer.error,
        "daemonctl: the supervisor has not ended within 0 s: process " +
            std::to_string(supervisor_.Process().Pid()) + " (" +
            ProductProgram("DaemonManager.exe") +
            ") still runs\n"
            "  It waits for a call of a client that is under way, such as a stop, or for the end of a "
            "pass over its daemons; until then it still restarts them. If its console has stopped "
            "since, press Esc in its window.\n");
    mayEnd_.Signal();
    EXPECT_EQ(supervisor_.ExitCode(), 0U);
}

TEST_F(DaemonctlExit, does_not_wait_with_the_option_no_wait)
{
    EXPECT_EQ(Daemonctl("exit --no-wait"),
              (Answer{0, "the supervisor ends; its daemons run on\n", ""}));
    EXPECT_TRUE(supervisor_.Process().Running());
    mayEnd_.Signal();
    EXPECT_EQ(supervisor_.ExitCode(), 0U);
}

} // namespace
} // namespace vqrx::test
