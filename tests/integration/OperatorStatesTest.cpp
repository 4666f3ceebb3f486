// States of daemons as ps, check, doctor and report show them, and the other names of commands,
// with the real supervisor.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "FileContent.h"
#include "SupervisorProcess.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using Json = nlohmann::json;

constexpr const char* kNotShown =
    "the log does not show the supervisor that is running; see daemonctl doctor\n";

// The log of a supervisor that was killed. While this object exists, nobody can write the log.
class LogOfDeadSupervisor {
public:
    void Hold(const std::string& root)
    {
        const std::string records =
            "0;Sun Nov 16 04:52:36.123;1763265156123;2;Deamon Thread started\r\n"
            "1;Sun Nov 16 04:52:37.123;1763265157123;1;Start DaemonId(0) PId(7) : gone.exe \r\n";
        std::filesystem::create_directory(root + "\\Logs");
        const std::string path = root + "\\Logs\\DaemonManager.log";
        std::ofstream(path, std::ios::binary) << "0x0000009D\r\n" << records;
        file_.Reset(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                0, nullptr));
    }

private:
    system::win32::v1::UniqueKernelHandle file_;
};

// Makes the firmware root of a supervisor that cannot write its log.
SupervisorProcess::Configure WithLog(LogOfDeadSupervisor& log)
{
    return [&log](FirmwareRegistry& registry, const std::string& root) {
        SupervisorProcess::InstalledInApp(registry, root);
        log.Hold(root);
    };
}

TEST(OperatorStates, Crash_loop_is_a_state_of_its_own_in_ps_check_doctor_and_report)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("exits_with");
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" 3").exitCode, 0U);
    ASSERT_TRUE(WaitUntil(
        [&] { return supervisor.CountLog(0, "Exception caught in : Unknown (0x3)") > 6; }));

    const Json daemons = ListedDaemons();
    ASSERT_EQ(daemons.size(), 1U)
        << daemons; // no second row for a start that is not in the log yet
    EXPECT_EQ(daemons[0].at("state"), "restarting");
    EXPECT_EQ(daemons[0].at("id"), 0);
    EXPECT_GE(daemons[0].at("restarts_last_hour"), 6);
    const std::string list = supervisor.Write("list.txt", "exits_with.exe\n");
    const Answer check = Daemonctl("check --expect " + list);
    EXPECT_EQ(check.exitCode, 1U);
    EXPECT_THAT(check.output, ::testing::MatchesRegex(
                                  "missing  exits_with.exe: daemon 0 ends again and again: "
                                  "\\d+ restarts in the last hour, last exit: exit code 3\n"));
    const Answer doctor = Daemonctl("doctor");
    EXPECT_NE(doctor.output.find("1 daemon, 1 in trouble"), std::string::npos) << doctor;
    EXPECT_NE(doctor.output.find("daemon 0 ends again and again"), std::string::npos) << doctor;
    const std::string page = supervisor.Root() + "\\page.html";
    EXPECT_EQ(Daemonctl("report --output " + page).exitCode, 0U);
    EXPECT_NE(ReadText(page).find("was restarted"), std::string::npos);
}

// The supervisor takes a process that ended with exit code 259 for a running one.
TEST(OperatorStates, Process_that_is_gone_has_ended_in_ps_doctor_and_report)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("exits_with") + "\" 259").exitCode, 0U);
    ASSERT_NE(supervisor.WaitForStart(0), 0U);
    ASSERT_TRUE(WaitUntil([] { return ListedDaemons().at(0).at("state") == "ended"; }));

    const std::string page = supervisor.Root() + "\\page.html";
    const std::string json = supervisor.Root() + "\\page.json";
    EXPECT_EQ(Daemonctl("report --output " + page + " --json " + json).exitCode, 0U);
    const Json daemons = Json::parse(ReadText(json)).at("daemons");
    ASSERT_EQ(daemons.size(), 1U) << daemons;
    EXPECT_EQ(daemons[0].at("state"), "ended");
    EXPECT_EQ(daemons[0].at("watched"), true);
    EXPECT_EQ(daemons[0].at("up_since_ms"), nullptr);
    EXPECT_EQ(daemons[0].at("availability"), 0.0);
    EXPECT_NE(ReadText(page).find(R"(data-name="State">ended<)"), std::string::npos);
    EXPECT_TRUE(WaitUntil([] {
        return Daemonctl("doctor").output.find("1 daemon, 1 in trouble") != std::string::npos;
    }));
}

TEST(OperatorStates, Ps_shows_a_batch_file_that_runs_as_running)
{
    const SupervisorProcess supervisor;
    const std::string batch = supervisor.Write("start.bat", "@pause\r\n");
    EXPECT_EQ(Daemonctl("launch " + batch).exitCode, 0U);
    const DWORD process = supervisor.WaitForStart(0);
    ASSERT_NE(process, 0U);
    const Json daemons = ListedDaemons();
    ASSERT_EQ(daemons.size(), 1U) << daemons;
    EXPECT_EQ(daemons[0].at("state"), "running");
    EXPECT_EQ(daemons[0].at("process_id"), process);
    EXPECT_EQ(Daemonctl("wait 0 --for running --timeout 0").exitCode, 0U);
}

TEST(OperatorStates, Metrics_show_a_damaged_log_under_each_name_that_the_supervisor_gives_it)
{
    const SupervisorProcess supervisor;
    const auto showsDamage = [] {
        return Daemonctl("metrics").output.find("\ndaemonmanager_log_damaged 1\n") !=
               std::string::npos;
    };
    EXPECT_FALSE(showsDamage());
    for (const char* ending : {".damaged", ".damaged2"}) {
        const std::string damaged = supervisor.LogFile() + ending;
        std::ofstream(damaged) << "x";
        EXPECT_TRUE(showsDamage()) << ending;
        std::filesystem::remove(damaged);
    }
}

TEST(OperatorStates, Daemons_of_a_dead_supervisor_are_not_those_of_one_that_cannot_write)
{
    LogOfDeadSupervisor log;
    const SupervisorProcess supervisor(WithLog(log));
    const Answer notShown{5, "", std::string("daemonctl: ") + kNotShown};
    EXPECT_EQ(Daemonctl("ps"), notShown);
    EXPECT_EQ(Daemonctl("check --expect " + supervisor.Write("list.txt", "gone.exe\n")), notShown);
    EXPECT_EQ(Daemonctl("wait 0 --for ended --timeout 0"), notShown);
    EXPECT_EQ(Daemonctl("--daemon-ids"), (Answer{5, "", ""}));
    const std::string metrics = Daemonctl("metrics").output;
    EXPECT_NE(metrics.find("\ndaemonmanager_log_readable 0\n"), std::string::npos) << metrics;
    EXPECT_EQ(metrics.find("gone.exe"), std::string::npos) << metrics;
    const std::string report = Daemonctl("report --output -").output;
    EXPECT_NE(report.find("The log does not show the supervisor that is running."),
              std::string::npos);
    EXPECT_EQ(report.find("<h2>Now</h2>"), std::string::npos);
    const std::string doctor = Daemonctl("doctor").output;
    EXPECT_NE(doctor.find("\nok       daemons           not examined"), std::string::npos)
        << doctor;
    const CapturedProgram watch('"' + ProductProgram("daemonctl.exe") + "\" ps --watch 1");
    EXPECT_TRUE(WaitUntil([&] { return watch.Output().find(kNotShown) != std::string::npos; }))
        << watch.Output();
    EXPECT_EQ(watch.Output().find("gone.exe"), std::string::npos) << watch.Output();
}

TEST(OperatorStates, Recording_of_a_dead_supervisor_does_not_show_the_daemons_of_the_running_one)
{
    LogOfDeadSupervisor log;
    const SupervisorProcess supervisor(WithLog(log));
    const std::string folder = supervisor.Root() + "\\record";
    EXPECT_EQ(Daemonctl("record --trust --once --output " + folder).exitCode, 0U);
    EXPECT_EQ(Daemonctl("ps --log " + folder),
              (Answer{5, "",
                      "daemonctl: " + folder +
                          " does not show the supervisor that is running; to read the log itself: "
                          "daemonctl ps\n  To find out more: daemonctl doctor\n"}));
}

TEST(OperatorStates,
     Doctor_and_report_say_why_a_program_cannot_start_and_what_of_the_log_is_damaged)
{
    const SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe -x").exitCode, 0U);
    ASSERT_TRUE(supervisor.WaitForLog(1, "Unable to start C:\\no\\such.exe -x "));
    ASSERT_TRUE(OverwriteRecord(supervisor.LogFile(), "0;")); // the number of the first record
    const std::string doctor = Daemonctl("doctor").output;
    EXPECT_NE(doctor.find("a daemon without a known id cannot be started: C:\\no\\such.exe -x\n"),
              std::string::npos)
        << doctor;
    EXPECT_NE(doctor.find("C:\\no\\such.exe does not exist; "), std::string::npos) << doctor;
    const std::string report = Daemonctl("report --output -").output;
    EXPECT_NE(report.find("such.exe cannot be started: C:\\no\\such.exe does not exist; "),
              std::string::npos);
    EXPECT_NE(doctor.find(supervisor.LogFile() + ": 1 line could not be read\n"), std::string::npos)
        << doctor;
}

TEST(OperatorStates, Other_names_of_commands_work_or_name_the_right_command)
{
    const SupervisorProcess supervisor;
    for (const char* name : {"list", "status"}) {
        EXPECT_EQ(Daemonctl(name).output.find("ID  STATE "), 0U) << name;
    }
    EXPECT_NE(Daemonctl("logs").output.find("Deamon Thread started"), std::string::npos);
    EXPECT_NE(Daemonctl("start x.exe").error.find("daemonctl launch PATH"), std::string::npos);
    EXPECT_NE(Daemonctl("kill 3").error.find("daemonctl stop ID"), std::string::npos);
    EXPECT_EQ(Daemonctl("help ps"), Daemonctl("ps --help"));
}

TEST(OperatorStates, The_ids_for_the_completion_are_those_of_the_running_supervisor)
{
    const std::string program = TestProgram("no_windows");
    EXPECT_EQ(Daemonctl("--daemon-ids"), (Answer{3, "", ""}));
    SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" one").exitCode, 0U);
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" \"two words\"").exitCode, 0U);
    EXPECT_NE(supervisor.WaitForStart(0), 0U);
    EXPECT_NE(supervisor.WaitForStart(1), 0U);
    EXPECT_EQ(Daemonctl("--daemon-ids 1"), (Answer{0, "1 " + program + " two words\n", ""}));
    EXPECT_EQ(Daemonctl("stop 0").exitCode, 0U);
    EXPECT_EQ(Daemonctl("--daemon-ids"), (Answer{0, "1 " + program + " two words\n", ""}));
}

} // namespace
} // namespace vqrx::test
