#include "ConnectionChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Answer = SupervisorFacts::Answer;

ProxyFacts HealthyProxy()
{
    ProxyFacts facts;
    facts.library = {0, R"(C:\FW\App\DaemonMgrPS.dll)", "1.0.0"};
    facts.libraryThere = true;
    return facts;
}

SupervisorFacts HealthySupervisor()
{
    SupervisorFacts facts;
    facts.answer = Answer::kAnswers;
    facts.processes = {{12, R"(C:\FW\App\DaemonManager.exe)", "1.0.0"}};
    return facts;
}

void ExpectProxy(const ProxyFacts& facts, Verdict verdict, const std::string& text)
{
    ExpectFinding(JudgeProxy(facts, "1.0.0"), verdict, text);
}

void ExpectSupervisor(const SupervisorFacts& facts, Verdict verdict, const std::string& text)
{
    ExpectFinding(JudgeSupervisor(facts, "1.0.0"), verdict, text);
}

TEST(ProxyCheck, Warns_if_the_library_has_another_version_or_none)
{
    ProxyFacts facts = HealthyProxy();
    ExpectProxy(facts, Verdict::kOk, R"(C:\FW\App\DaemonMgrPS.dll, version 1.0.0)");
    facts.library.version = "0.9.0";
    ExpectProxy(facts, Verdict::kWarning,
                R"(C:\FW\App\DaemonMgrPS.dll has version 0.9.0, this program has version 1.0.0)");
    facts.library.version = "";
    ExpectProxy(
        facts, Verdict::kWarning,
        R"(C:\FW\App\DaemonMgrPS.dll has an unknown version, this program has version 1.0.0)");
}

TEST(ProxyCheck, Fails_and_names_the_part_of_the_registration_that_is_missing)
{
    ProxyFacts facts = HealthyProxy();
    facts.libraryThere = false;
    ExpectProxy(facts, Verdict::kFailure,
                R"(C:\FW\App\DaemonMgrPS.dll is registered, but the file does not exist)");
    facts.libraryError = 2;
    ExpectProxy(facts, Verdict::kFailure,
                "the proxy/stub is registered, but without the path of its library");
    facts.interfaceError = 2;
    ExpectProxy(facts, Verdict::kFailure,
                "DaemonMgrPS.dll is not registered: no client can call the supervisor");
}

TEST(ProxyCheck, Registers_the_library_beside_this_program_by_its_full_path)
{
    ProxyFacts facts = HealthyProxy();
    facts.interfaceError = 2;
    EXPECT_EQ(JudgeProxy(facts, "1.0.0").remedy,
              "As administrator, call regsvr32 with the full path of the DaemonMgrPS.dll that lies "
              "beside DaemonManager.exe.");
    facts.besideThisProgram = R"(C:\Program Files\DaemonManager\DaemonMgrPS.dll)";
    EXPECT_EQ(JudgeProxy(facts, "1.0.0").remedy,
              R"(As administrator: regsvr32 "C:\Program Files\DaemonManager\DaemonMgrPS.dll")");
    facts.besideThisProgram = R"(C:\$(calc)\DaemonMgrPS.dll)";
    EXPECT_EQ(JudgeProxy(facts, "1.0.0").remedy,
              "As administrator, call regsvr32 with the full path of the DaemonMgrPS.dll that lies "
              "beside DaemonManager.exe.");
}

TEST(SupervisorCheck, Names_process_and_version_of_a_supervisor_that_answers)
{
    SupervisorFacts facts = HealthySupervisor();
    ExpectSupervisor(facts, Verdict::kOk, "published and answering (process 12, version 1.0.0)");
    facts.processes.clear(); // the program's file may have another name
    ExpectSupervisor(facts, Verdict::kOk, "published and answering");
}

TEST(SupervisorCheck, Warns_of_another_version_and_of_a_second_process)
{
    SupervisorFacts facts = HealthySupervisor();
    facts.processes[0].version = "0.9.0";
    ExpectSupervisor(
        facts, Verdict::kWarning,
        "published and answering (process 12, version 0.9.0); this program has version 1.0.0");
    facts.processes.push_back({13, "", ""});
    ExpectSupervisor(facts, Verdict::kWarning,
                     "published and answering (process 12, version 0.9.0, process 13)");
}

TEST(SupervisorCheck, Warns_of_a_process_that_only_has_the_name_and_shows_how_to_end_it)
{
    SupervisorFacts facts = HealthySupervisor();
    facts.processes.push_back({13, R"(C:\Users\guest\DaemonManager.exe)", ""});
    facts.processes.push_back({14, "", ""});
    facts.namesakes = {{13, R"(C:\Users\guest\DaemonManager.exe)", R"(PC\guest)"}, {14, "", ""}};
    ExpectSupervisor(
        facts, Verdict::kWarning,
        "published and answering (process 12, version 1.0.0, process 13, process 14)\n"
        "process 13 only has the supervisor's name: it runs C:\\Users\\guest\\DaemonManager.exe as "
        "PC\\guest\n"
        "process 14 only has the supervisor's name: it runs a file that this user may not see");
    EXPECT_EQ(JudgeSupervisor(facts, "1.0.0").remedy,
              "Find out who started it. To end it, as administrator:\ntaskkill /f /pid 13\n"
              "taskkill /f /pid 14");
    ASSERT_EQ(PossibleSupervisors(facts).size(), 1U);
    EXPECT_EQ(PossibleSupervisors(facts).front().processId, 12U);
}

TEST(SupervisorCheck, Fails_and_says_how_the_call_failed)
{
    SupervisorFacts facts = HealthySupervisor();
    facts.answer = Answer::kSilent;
    ExpectSupervisor(facts, Verdict::kFailure, "the supervisor is published, but does not answer");
    facts.answer = Answer::kFailed;
    facts.detail = "detach: 0x80070005";
    ExpectSupervisor(facts, Verdict::kFailure,
                     "the supervisor is published, but a call fails: detach: 0x80070005");
    facts.answer = Answer::kStranger;
    facts.detail = "not the installed supervisor answers: why";
    ExpectSupervisor(facts, Verdict::kFailure, "not the installed supervisor answers: why");
    facts.answer = Answer::kProxyNotRegistered;
    ExpectSupervisor(facts, Verdict::kFailure,
                     "the supervisor runs, but no client can call it without its proxy/stub");
}

TEST(SupervisorCheck, Fails_for_a_supervisor_that_is_not_published_or_does_not_run)
{
    SupervisorFacts facts = HealthySupervisor();
    facts.answer = Answer::kNotRunning;
    ExpectSupervisor(
        facts, Verdict::kFailure,
        "DaemonManager.exe runs (process 12, version 1.0.0) but is not published: it is "
        "starting and waits for the firewall service, or its publication failed, or it runs as "
        "another user or in another session, such as that of a service");
    facts.processes.clear();
    ExpectSupervisor(facts, Verdict::kFailure, "no supervisor is running on this machine");
}

TEST(SupervisorCheck, Names_the_session_of_a_supervisor_that_runs_in_another_one)
{
    SupervisorFacts facts = HealthySupervisor();
    facts.answer = Answer::kNotRunning;
    facts.session = 1;
    facts.elsewhere = {{12, 0, R"(NT AUTHORITY\SYSTEM)"}};
    ExpectSupervisor(facts, Verdict::kFailure,
                     "DaemonManager.exe runs (process 12, version 1.0.0) but no call reaches it: "
                     "process 12 runs in session 0 as NT AUTHORITY\\SYSTEM, this program in "
                     "session 1: Windows shows a supervisor only to programs of its own session");
    EXPECT_EQ(JudgeSupervisor(facts, "1.0.0").remedy,
              "Run daemonctl in that session; in session 0: as a scheduled task of the account "
              "SYSTEM. Show its last records: daemonctl log --tail 20");
    EXPECT_EQ(DescribeElsewhere({{12, 0, ""}, {13, 2, ""}}, 1),
              "process 12 runs in session 0, process 13 runs in session 2, this program in session "
              "1: Windows shows a supervisor only to programs of its own session");
    EXPECT_EQ(DescribeElsewhere({}, 1), "");
    facts.answer = Answer::kAnswers; // a second one elsewhere changes nothing
    EXPECT_EQ(DescribeSupervisor(facts), "published and answering (process 12, version 1.0.0)");
}

} // namespace
} // namespace vqrx::test
