#include "AutostartChecks.h"

#include "ExpectFinding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::AllOf;
using testing::HasSubstr;

AutostartFacts FactsOfService()
{
    AutostartFacts facts;
    facts.command = {R"(C:\FW\DaemonGuard.exe)", {GuardMode::kService, ""}};
    facts.entries = {{GuardMode::kService, CommandLineOf(facts.command), true, true}};
    facts.programThere = true;
    facts.fleet = R"(C:\FW\App\fleet.txt)";
    facts.fleetThere = true;
    facts.fleetPrograms = 2;
    return facts;
}

TEST(AutostartCheck, Machine_on_which_nothing_starts_the_supervisor_is_ok)
{
    const AutostartFacts facts;
    ExpectFinding(JudgeAutostart(facts), Verdict::kOk,
                  "no guard starts the supervisor at power-on (see daemonctl autostart)");
    EXPECT_FALSE(UsesFleetFile(facts));
}

TEST(AutostartCheck, Service_that_runs_and_logon_are_ok)
{
    AutostartFacts facts = FactsOfService();
    ExpectFinding(JudgeAutostart(facts), Verdict::kOk,
                  "the service DaemonGuard starts the supervisor with Windows: "
                  R"("C:\FW\DaemonGuard.exe" --service)");
    EXPECT_TRUE(UsesFleetFile(facts));
    facts.entries = {{GuardMode::kSession, "the command", true, false}};
    ExpectFinding(JudgeAutostart(facts), Verdict::kOk,
                  "the machine's Run key starts the supervisor when a user logs on: the command");
}

TEST(AutostartCheck, Session_is_judged_only_if_Windows_starts_the_guard_at_a_logon)
{
    AutostartFacts facts = FactsOfService();
    EXPECT_FALSE(UsesSession(facts));
    facts.entries = {{GuardMode::kSession, "the command", true, false}};
    EXPECT_TRUE(UsesSession(facts));
    facts.entries.push_back({GuardMode::kService, "x", true, false});
    EXPECT_FALSE(UsesSession(facts));
    facts.entries.clear();
    EXPECT_FALSE(UsesSession(facts));
}

TEST(AutostartCheck, Warns_of_a_service_that_is_stopped_or_not_automatic)
{
    AutostartFacts facts = FactsOfService();
    facts.entries[0].isRunning = false;
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning,
                  "the service DaemonGuard starts the supervisor with Windows, but it does not run "
                  "now: if the supervisor ends, nobody starts it again");
    facts.entries[0].isAutomatic = false;
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning,
                  "the service DaemonGuard exists, but Windows does not start it by itself");
}

TEST(AutostartCheck, Two_entries_are_a_warning)
{
    AutostartFacts facts = FactsOfService();
    facts.entries.push_back({GuardMode::kSession, "x", true, false});
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning,
                  "both the service DaemonGuard and the machine's Run key start a guard");
    EXPECT_FALSE(UsesFleetFile(facts));
}

TEST(AutostartCheck, Entry_that_starts_no_guard_is_a_failure)
{
    AutostartFacts facts = FactsOfService();
    facts.programThere = false;
    ExpectFinding(JudgeAutostart(facts), Verdict::kFailure,
                  R"(C:\FW\DaemonGuard.exe does not exist)");
    facts.command = {};
    facts.entries[0].commandLine = "notepad.exe";
    ExpectFinding(JudgeAutostart(facts), Verdict::kFailure,
                  "this command line starts no guard: notepad.exe");
}

TEST(AutostartCheck, Warns_if_Windows_does_not_answer)
{
    AutostartFacts facts;
    facts.error = "the service DaemonGuard cannot be read: Windows error 5";
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning, facts.error);
    EXPECT_FALSE(UsesFleetFile(facts));
}

// Whoever may write the log or the fleet file chooses what gets the rights of the guard.
TEST(AutostartCheck, Log_that_others_may_write_is_a_failure_unless_the_guard_trusts_it)
{
    AutostartFacts facts = FactsOfService();
    facts.logWeaknesses = {"Everyone may write to C:\\FW\\Logs"};
    ExpectFinding(JudgeAutostart(facts), Verdict::kFailure,
                  "the guard hands no daemon over: others than administrators may have written the "
                  "supervisor's log\nEveryone may write to C:\\FW\\Logs");
    facts.entries.front().isRunning = false; // the worse finding does not hide this one
    const Finding both = JudgeAutostart(facts);
    EXPECT_EQ(both.verdict, Verdict::kFailure);
    EXPECT_THAT(both.text, AllOf(HasSubstr("does not run now"), HasSubstr("hands no daemon over")));
    EXPECT_THAT(both.remedy, HasSubstr("daemonctl autostart start\n"));
    facts = FactsOfService();
    facts.logWeaknesses = {"Everyone may write to C:\\FW\\Logs"};
    facts.command.arguments.mode = GuardMode::kSession;
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning,
                  "as an administrator's, the guard hands no daemon over: others than "
                  "administrators may have written the supervisor's log\nEveryone may write to "
                  "C:\\FW\\Logs");
    facts.command.arguments.trust = true;
    ExpectFinding(JudgeAutostart(facts), Verdict::kWarning,
                  "the guard was set up with --trust: it believes what others than administrators "
                  "may have written\nEveryone may write to C:\\FW\\Logs");
}

TEST(FleetFileCheck, File_that_others_may_write_is_a_failure_unless_the_guard_trusts_it)
{
    AutostartFacts facts = FactsOfService();
    facts.fleetWeaknesses = {"Everyone may write to C:\\FW\\App"};
    ExpectFinding(JudgeFleetFile(facts), Verdict::kFailure,
                  "the guard launches nothing: others than administrators may have written "
                  "C:\\FW\\App\\fleet.txt\nEveryone may write to C:\\FW\\App");
    facts.command.arguments.trust = true;
    ExpectFinding(JudgeFleetFile(facts), Verdict::kWarning,
                  "the guard was set up with --trust: it believes what others than administrators "
                  "may have written\nEveryone may write to C:\\FW\\App");
}

TEST(FleetFileCheck, File_without_faults_is_ok_and_the_default_file_may_be_missing)
{
    AutostartFacts facts = FactsOfService();
    ExpectFinding(JudgeFleetFile(facts), Verdict::kOk, R"(C:\FW\App\fleet.txt: 2 programs)");
    facts.fleetPrograms = 1;
    ExpectFinding(JudgeFleetFile(facts), Verdict::kOk, R"(C:\FW\App\fleet.txt: 1 program)");
    facts.fleetThere = false;
    ExpectFinding(JudgeFleetFile(facts), Verdict::kOk,
                  R"(there is no C:\FW\App\fleet.txt: the guard launches nothing at power-on)");
}

TEST(FleetFileCheck, Named_file_that_is_missing_is_a_failure)
{
    AutostartFacts facts = FactsOfService();
    facts.command.arguments.fleet = facts.fleet;
    facts.fleetThere = false;
    ExpectFinding(JudgeFleetFile(facts), Verdict::kFailure,
                  R"(C:\FW\App\fleet.txt does not exist)");
}

TEST(FleetFileCheck, Bad_lines_are_a_failure_and_missing_programs_a_warning)
{
    AutostartFacts facts = FactsOfService();
    facts.fleetWarnings = {"line 2: C:\\x.exe does not exist"};
    ExpectFinding(JudgeFleetFile(facts), Verdict::kWarning,
                  "C:\\FW\\App\\fleet.txt\nline 2: C:\\x.exe does not exist");
    facts.fleetErrors = {"line 1: a double quote is not closed"};
    ExpectFinding(JudgeFleetFile(facts), Verdict::kFailure,
                  "C:\\FW\\App\\fleet.txt: the guard launches nothing\n"
                  "line 1: a double quote is not closed\nline 2: C:\\x.exe does not exist");
}

TEST(FleetFileCheck, File_whose_name_cannot_be_pasted_is_in_no_command)
{
    AutostartFacts facts = FactsOfService();
    facts.fleetErrors = {"line 1: a double quote is not closed"};
    EXPECT_EQ(JudgeFleetFile(facts).remedy,
              R"(Mend the file. To test it: daemonctl apply --dry-run "C:\FW\App\fleet.txt")");
    facts.fleet = R"(C:\$(calc)\fleet.txt)";
    EXPECT_EQ(JudgeFleetFile(facts).remedy,
              "Mend the file. To test it, run daemonctl apply with --dry-run on it.");
}

} // namespace
} // namespace vqrx::test
