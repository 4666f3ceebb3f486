// The commands of daemonctl that read the log: ps, wait, check and reattach, with the real
// supervisor.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "PrefixClass.h"
#include "Scene.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using Json = nlohmann::json;

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(Operator, Commands_report_that_no_supervisor_runs)
{
    const TempFolder folder;
    std::ofstream(folder.File("list.txt")) << "C:\\a.exe\n";
    for (const std::string& arguments :
         {std::string("ps"), std::string("ps --json"), std::string("wait 0"),
          "check --expect " + folder.File("list.txt"), "apply " + folder.File("list.txt"),
          std::string("reattach")}) {
        EXPECT_EQ(Daemonctl(arguments),
                  (Answer{3, "",
                          "daemonctl: no supervisor is running on this machine\n"
                          "  Start DaemonManager.exe as this user or as administrator.\n"}))
            << arguments;
    }
}

TEST(Operator, Commands_with_wrong_arguments_end_with_exit_code_2_and_an_error_text)
{
    for (const char* arguments :
         {"ps x", "wait", "wait x", "wait 1 --for ever", "wait 1 --timeout -1", "check",
          "wait --for supervisor 1", "wait --for ended", "check --expect C:\\no\\such.txt", "apply",
          "apply C:\\no\\such.txt", "reattach --from C:\\no\\such.json", "doctor x", "completion",
          "completion fish"}) {
        const Answer answer = Daemonctl(arguments);
        EXPECT_EQ(answer.exitCode, 2U) << arguments;
        EXPECT_NE(answer.error, "") << arguments;
    }
}

TEST(Operator, Ps_shows_running_restarted_and_not_startable_daemons)
{
    const SupervisorProcess supervisor;
    const std::string runs = TestProgram("no_windows");
    EXPECT_EQ(Daemonctl("launch \"" + runs + "\" one \"two words\"").exitCode, 0U);
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    const DWORD first = supervisor.WaitForStart(0);
    KillProcess(first);
    const DWORD second = supervisor.WaitForStart(0, first);
    ASSERT_NE(second, 0U);
    ASSERT_TRUE(supervisor.WaitForLog(1, "Unable to start C:\\no\\such.exe "));

    const Json daemons = ListedDaemons();
    ASSERT_EQ(daemons.size(), 2U) << daemons;
    const Json& running = daemons[0];
    EXPECT_EQ(running.at("id"), 0);
    EXPECT_EQ(running.at("state"), "running");
    EXPECT_EQ(running.at("process_id"), second);
    EXPECT_EQ(running.at("image"), runs);
    EXPECT_EQ(running.at("restarts"), 1);
    EXPECT_EQ(running.at("restarts_complete"), true);
    EXPECT_EQ(running.at("last_exit").at("sure"), true);
    EXPECT_EQ(running.at("attached"), false);
    EXPECT_EQ(running.at("in_log"), true);
    EXPECT_EQ(running.at("command"), runs + " one two words");
    EXPECT_GT(running.at("memory_bytes"), 0);
    EXPECT_EQ(daemons[1].at("id"), nullptr);
    EXPECT_EQ(daemons[1].at("state"), "cannot_start");
    EXPECT_EQ(daemons[1].at("process_id"), nullptr);
    EXPECT_EQ(daemons[1].at("command"), "C:\\no\\such.exe");

    const Answer table = Daemonctl("ps");
    EXPECT_EQ(table.exitCode, 0U);
    const auto lines = Lines(table.output);
    ASSERT_EQ(lines.size(), 3U) << table;
    EXPECT_THAT(lines[0], ::testing::MatchesRegex(
                              "ID  STATE  .*PID  UP SINCE .*RESTARTS  LAST EXIT .*CPU .*MEMORY  "
                              "COMMAND"));
    // The width of the column depends on the listed process ids.
    EXPECT_THAT(lines[1],
                ::testing::ContainsRegex("^ 0  running  +" + std::to_string(second) + "  "));
    EXPECT_THAT(lines[1], ::testing::EndsWith("MiB  " + runs + " one two words"));
    EXPECT_THAT(lines[2], ::testing::StartsWith(" -  cannot start "));
}

TEST(Operator, Ps_does_not_show_a_stopped_daemon)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("no_windows") + "\"").exitCode, 0U);
    EXPECT_NE(supervisor.WaitForStart(0), 0U);
    EXPECT_EQ(Daemonctl("stop 0").exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 0 --for ended --timeout 20"),
              (Answer{0, "daemon 0 has ended\n", ""}));
    EXPECT_EQ(ListedDaemons(), Json::array());
    EXPECT_EQ(Lines(Daemonctl("ps").output).size(), 1U);
}

TEST(Operator, Wait_returns_when_a_daemon_runs_ends_or_restarts)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("no_windows") + "\"").exitCode, 0U);
    Answer answer = Daemonctl("wait 0 --timeout 20");
    const DWORD first = supervisor.WaitForStart(0);
    EXPECT_EQ(answer, (Answer{0, "daemon 0 runs as process " + std::to_string(first) + "\n", ""}));
    EXPECT_EQ(Daemonctl("wait 0 --for restarted --timeout 0"),
              (Answer{1, "",
                      "daemonctl: daemon 0 was not restarted within 0 s: it runs as process " +
                          std::to_string(first) +
                          "\n  To see what happened: daemonctl log --tail 10 --daemon 0\n"}));
    EXPECT_EQ(Daemonctl("wait 7 --for ended --timeout 0"),
              (Answer{1, "",
                      "daemonctl: daemon 7 was not ended within 0 s: the log does not show "
                      "it\n  To see all daemons: daemonctl ps\n"}));
    EXPECT_EQ(Daemonctl("wait no_windows.exe --timeout 0"), answer);
    EXPECT_EQ(Daemonctl("wait other.exe --timeout 0"),
              (Answer{1, "",
                      "daemonctl: no daemon with a known id runs other.exe\n"
                      "  To see all daemons: daemonctl ps\n"}));
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("no_windows") + "\" again").exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 1 --timeout 20").exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait no_windows.exe --timeout 0"),
              (Answer{1, "",
                      "daemonctl: several daemons run no_windows.exe; wait for one of these ids: "
                      "0 1\n"}));
    const CapturedProgram ended('"' + ProductProgram("daemonctl.exe") +
                                "\" wait 0 --for ended --timeout 50");
    const CapturedProgram restarted('"' + ProductProgram("daemonctl.exe") +
                                    "\" wait 0 --for restarted --timeout 50");
    // A third program that starts later has read the log once, so both programs have read it too.
    EXPECT_EQ(Daemonctl("wait 0 --for ended --timeout 1").exitCode, 1U);
    KillProcess(first);
    EXPECT_EQ(ended.ExitCode(), 0U) << ended.Error();
    EXPECT_EQ(restarted.ExitCode(), 0U) << restarted.Error();
    const DWORD second = supervisor.WaitForStart(0, first);
    EXPECT_EQ(restarted.Output(), "daemon 0 runs as process " + std::to_string(second) + "\n");
}

TEST(Operator, Wait_returns_when_a_supervisor_answers_and_when_none_runs)
{
    EXPECT_EQ(Daemonctl("wait --for no-supervisor"), (Answer{0, "no supervisor runs\n", ""}));
    EXPECT_EQ(Daemonctl("wait --for supervisor --timeout 0"),
              (Answer{1, "",
                      "daemonctl: no supervisor answered within 0 s: no supervisor is running on "
                      "this machine\n  To find out more: daemonctl doctor\n"}));
    const CapturedProgram begins('"' + ProductProgram("daemonctl.exe") +
                                 "\" wait --for supervisor");
    SupervisorProcess supervisor;
    EXPECT_EQ(begins.ExitCode(), 0U) << begins.Error();
    EXPECT_EQ(begins.Output(), "the supervisor answers\n");
    EXPECT_EQ(Daemonctl("wait --for supervisor --timeout 0").exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait --for no-supervisor --timeout 0"),
              (Answer{1, "",
                      "daemonctl: a supervisor still ran after 0 s: published and answering "
                      "(process " +
                          std::to_string(supervisor.Process().Pid()) +
                          ", version 1.0.0)\n  To find out more: daemonctl doctor\n"}));
    const CapturedProgram ends('"' + ProductProgram("daemonctl.exe") +
                               "\" wait --for no-supervisor");
    EXPECT_EQ(supervisor.Exit(), 0U);
    EXPECT_EQ(ends.ExitCode(), 0U) << ends.Error();
}

TEST(Operator, Check_compares_the_daemons_with_a_list_of_programs)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("no_windows");
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" one").exitCode, 0U);
    const std::string process = std::to_string(supervisor.WaitForStart(0));
    const std::string there = supervisor.Write("there.txt", "# all\r\nNO_WINDOWS.exe\r\n");
    Answer answer = Daemonctl("check --expect " + there);
    EXPECT_EQ(answer.exitCode, 0U) << answer;
    EXPECT_EQ(
        answer.output.find("ok       NO_WINDOWS.exe: daemon 0, process " + process + ", up since "),
        0U)
        << answer;
    answer = Daemonctl("check --min-uptime 3600 --expect " + there);
    EXPECT_EQ(answer.exitCode, 1U);
    EXPECT_THAT(answer.output,
                ::testing::MatchesRegex("missing  NO_WINDOWS.exe: daemon 0 has run for \\d+ s, "
                                        "which is less than 3600 s\n"));
    const std::string two = supervisor.Write("two.txt", program + " one\n" + program + "\n");
    answer = Daemonctl("check --json --expect " + two);
    EXPECT_EQ(answer.exitCode, 1U);
    const Json expected = Json::parse(answer.output).at("expected");
    EXPECT_EQ(expected.at(0).at("running"), true);
    EXPECT_EQ(expected.at(0).at("id"), 0);
    EXPECT_EQ(expected.at(1), (Json{{"line", 2},
                                    {"program", program},
                                    {"running", false},
                                    {"id", nullptr},
                                    {"process_id", nullptr},
                                    {"note", "no daemon runs it"}}));
    const std::string bad = supervisor.Write("bad.txt", "\"x\n");
    const std::string help =
        "\n  For the form of a list, with an example: daemonctl check --help\n";
    EXPECT_EQ(
        Daemonctl("check --expect " + bad),
        (Answer{2, "", "daemonctl: " + bad + ", line 1: a double quote is not closed" + help}));
    const std::string empty = supervisor.Write("empty.txt", "# all\n");
    EXPECT_EQ(Daemonctl("check --expect " + empty),
              (Answer{2, "", "daemonctl: " + empty + ", the list names no program" + help}));
}

TEST(Operator, Commands_end_with_exit_code_5_if_the_log_cannot_be_read)
{
    const SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(FirmwareRegistry::kCurrent, root);
        std::ofstream(root + "\\Logs") << "in the way";
    });
    for (const char* arguments : {"ps", "wait 0", "stop --all", "reattach"}) {
        const Answer answer = Daemonctl(arguments);
        EXPECT_EQ(answer.exitCode, 5U) << arguments << ": " << answer;
        EXPECT_THAT(answer.error, ::testing::EndsWith("\n  To find out more: daemonctl doctor\n"))
            << arguments;
    }
    const Answer restart = Daemonctl("restart 0");
    EXPECT_EQ(restart.exitCode, 5U) << restart;
    EXPECT_THAT(restart.error, ::testing::HasSubstr(" cannot be read: "));
    EXPECT_THAT(restart.error, ::testing::EndsWith("\n  To find out more: daemonctl doctor\n"));
}

TEST(Operator, Ps_shows_processes_that_the_log_no_longer_shows)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("no_windows");
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" \"old one\"").exitCode, 0U);
    const DWORD process = supervisor.WaitForStart(0);
    ASSERT_NE(process, 0U);
    ASSERT_TRUE(OverwriteRecord(supervisor.LogFile(), "Start DaemonId(0)"));
    const Json daemons = ListedDaemons();
    ASSERT_EQ(daemons.size(), 1U) << daemons;
    EXPECT_EQ(daemons[0].at("id"), nullptr);
    EXPECT_EQ(daemons[0].at("state"), "running");
    EXPECT_EQ(daemons[0].at("process_id"), process);
    EXPECT_EQ(daemons[0].at("in_log"), false);
    EXPECT_EQ(daemons[0].at("command"), program + " old one");
    const std::string list = supervisor.Write("list.txt", program + " \"old one\"\n");
    EXPECT_EQ(Daemonctl("check --expect " + list).exitCode, 0U);
}

} // namespace
} // namespace vqrx::test
