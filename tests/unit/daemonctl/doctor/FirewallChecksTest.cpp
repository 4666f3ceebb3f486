#include "FirewallChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Program = FirewallRuleFacts::Program;
using Names = std::vector<std::string>;

constexpr long kDenied = static_cast<long>(0x80070005U - 0x100000000LL);

TEST(FirewallRules, Rule_is_the_supervisors_if_it_is_named_after_its_program)
{
    EXPECT_TRUE(IsSupervisorsRule({R"(allowing C:\a.exe)", R"(c:\A.EXE)", Program::kThere}));
    EXPECT_TRUE(IsSupervisorsRule({R"(allowing C:\é.exe)", R"(c:\É.EXE)", Program::kThere}));
    EXPECT_FALSE(IsSupervisorsRule({R"(allowing C:\a.exe)", R"(C:\b.exe)", Program::kThere}));
    EXPECT_FALSE(IsSupervisorsRule({"allowing everything", "", Program::kThere}));
    EXPECT_FALSE(IsSupervisorsRule({R"(Allowing C:\a.exe)", R"(C:\a.exe)", Program::kThere}));
}

TEST(FirewallRules, Rule_is_dead_if_its_program_is_gone)
{
    EXPECT_EQ(DeadRules({0,
                         {{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kGone},
                          {R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::kThere}},
                         {}}),
              Names{R"(allowing C:\a.exe)"});
}

TEST(FirewallRules, Rule_for_a_program_on_a_missing_drive_is_not_dead)
{
    EXPECT_EQ(DeadRules({0, {{R"(allowing E:\a.exe)", R"(E:\a.exe)", Program::kUnknown}}, {}}),
              Names{});
}

TEST(FirewallRules, Rule_of_somebody_else_is_not_dead_nor_is_a_rule_with_its_name)
{
    EXPECT_EQ(DeadRules({0,
                         {{R"(allowing C:\a.exe)", R"(C:\other.exe)", Program::kGone},
                          {R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kGone}},
                         {}}),
              Names{});
}

TEST(FirewallRules, Rule_for_the_program_of_a_daemon_is_not_dead_while_the_program_is_gone)
{
    const FirewallRuleFacts rule{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kGone};
    EXPECT_EQ(DeadRules({0, {rule}, {R"(c:\A.exe -x )"}}), Names{});
    EXPECT_EQ(DeadRules({0, {rule}, {R"(C:\a.exe2 )", R"(D:\a.exe )"}}),
              Names{R"(allowing C:\a.exe)"});
}

TEST(FirewallRules, Name_of_two_dead_rules_comes_twice)
{
    const FirewallRuleFacts rule{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kGone};
    EXPECT_EQ(DeadRules({0, {rule, rule}, {}}),
              (Names{R"(allowing C:\a.exe)", R"(allowing C:\a.exe)"}));
}

TEST(FirewallRules, Second_rule_for_a_program_is_a_duplicate)
{
    EXPECT_EQ(DuplicateRules({{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kThere},
                              {R"(allowing C:\A.exe)", R"(C:\A.exe)", Program::kThere},
                              {R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::kThere}}),
              Names{R"(allowing C:\A.exe)"});
    EXPECT_EQ(DuplicateRules({{R"(allowing all)", R"(C:\a.exe)", Program::kThere},
                              {R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kThere}}),
              Names{});
}

TEST(FirewallRulesCheck, Counts_the_rules_and_names_the_dead_and_the_duplicate_ones)
{
    FirewallRulesFacts facts;
    facts.rules = {{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kThere}};
    ExpectFinding(JudgeFirewallRules(facts), Verdict::kOk,
                  "1 rules \"allowing ...\", 0 whose program is gone, 0 duplicate");
    facts.rules.push_back({R"(allowing C:\A.exe)", R"(C:\A.exe)", Program::kThere});
    facts.rules.push_back({R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::kGone});
    ExpectFinding(JudgeFirewallRules(facts), Verdict::kWarning,
                  "3 rules \"allowing ...\", 1 whose program is gone, 1 duplicate\n"
                  "gone: \"allowing C:\\b.exe\"\nduplicate: \"allowing C:\\A.exe\"");
}

TEST(FirewallRulesCheck, Warns_if_the_rules_cannot_be_listed)
{
    FirewallRulesFacts facts;
    facts.result = kDenied;
    ExpectFinding(JudgeFirewallRules(facts), Verdict::kWarning,
                  "the rules of the firewall cannot be listed: 0x80070005");
}

TEST(FirewallServiceCheck, Fails_if_the_service_keeps_a_starting_supervisor_waiting)
{
    FirewallServiceFacts facts;
    facts.name = "MpsSvc";
    facts.startType = 2;
    facts.state = 4;
    ExpectFinding(JudgeFirewallService(facts), Verdict::kOk, "MpsSvc is running");
    facts.state = 1;
    const Finding finding = JudgeFirewallService(facts);
    ExpectFinding(finding, Verdict::kFailure,
                  "MpsSvc is enabled, but not running (state 1): a supervisor that starts now "
                  "waits for the service without end");
    EXPECT_EQ(finding.remedy, "Disable the service, or start it: sc start MpsSvc");
}

TEST(FirewallRulesCheck, Warns_of_a_launched_program_whose_rule_is_gone)
{
    FirewallRulesFacts facts;
    facts.rules = {{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::kThere},
                   {R"(allowing C:\b.exe)", R"(C:\other.exe)", Program::kThere}};
    facts.launchedCommands = {R"(c:\A.exe -x )", R"(C:\b.exe )"};
    const Finding finding = JudgeFirewallRules(facts);
    ExpectFinding(
        finding, Verdict::kWarning,
        "2 rules \"allowing ...\", 0 whose program is gone, 0 duplicate, 1 missing, 1 not "
        "the supervisor's\n"
        "missing for: \"C:\\b.exe \"\n"
        "not the supervisor's: \"allowing C:\\b.exe\", for C:\\other.exe");
    facts.rules.pop_back();
    facts.launchedCommands.pop_back();
    EXPECT_EQ(JudgeFirewallRules(facts).verdict, Verdict::kOk);
}

TEST(FirewallRulesCheck, Warns_of_a_rule_that_has_a_name_of_the_supervisor_and_is_not_its_own)
{
    FirewallRulesFacts facts;
    facts.rules = {{"allowing everything", "", Program::kUnknown}, // no name of the supervisor's
                   {R"(allowing C:\a.exe)", "", Program::kUnknown},
                   {R"(allowing C:\b.exe" & calc & ")", R"(C:\b.exe)", Program::kThere}};
    const Finding finding = JudgeFirewallRules(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "3 rules \"allowing ...\", 0 whose program is gone, 0 duplicate, 2 not the "
                  "supervisor's\n"
                  "not the supervisor's: \"allowing C:\\a.exe\", for every program\n"
                  "not the supervisor's: \"allowing C:\\b.exe\" & calc & \"\", for C:\\b.exe");
    EXPECT_EQ(finding.remedy,
              "Find out who made the rules that are not the supervisor's. To remove them, as "
              "administrator:\n"
              "in the settings of the firewall: wf.msc\n"
              "netsh advfirewall firewall delete rule name=\"allowing C:\\a.exe\"");
}

TEST(FirewallRulesCheck, Name_of_a_program_needs_no_backslash_to_be_one_of_the_supervisors_names)
{
    const std::vector<FirewallRuleFacts> rules = {{"allowing video.exe", "", Program::kUnknown},
                                                  {"allowing VIDEO.EXE", "", Program::kUnknown},
                                                  {"allowing C:/FW/x", "", Program::kUnknown},
                                                  {R"(allowing C:\x)", "", Program::kUnknown}};
    EXPECT_EQ(ForeignRules(rules).size(), 4U);
    EXPECT_TRUE(ForeignRules({{"allowing everything", "", Program::kUnknown},
                              {"allowing .exe files", "", Program::kUnknown},
                              {"allowing", "", Program::kUnknown},
                              {R"(other C:\a.exe)", "", Program::kUnknown},
                              {"allowing video.exe", "VIDEO.exe", Program::kUnknown}})
                    .empty());
}

TEST(FirewallRulesCheck, Says_that_a_command_also_removes_the_supervisors_rule_of_this_name)
{
    FirewallRulesFacts facts;
    facts.rules = {{R"(allowing C:\a.exe)", "", Program::kUnknown},
                   {R"(allowing C:\A.exe)", R"(C:\a.exe)", Program::kThere},
                   {R"(allowing C:\b.exe)", "", Program::kUnknown}};
    EXPECT_EQ(JudgeFirewallRules(facts).remedy,
              "Find out who made the rules that are not the supervisor's. To remove them, as "
              "administrator:\n"
              "netsh advfirewall firewall delete rule name=\"allowing C:\\a.exe\"\n"
              "netsh advfirewall firewall delete rule name=\"allowing C:\\b.exe\"\n"
              "netsh goes by the name. It also removes the supervisor's rule \"allowing "
              "C:\\A.exe\". The supervisor makes this rule again when it launches the program "
              "next.");
}

TEST(FirewallServiceCheck, Only_a_service_that_runs_lets_the_supervisor_make_rules)
{
    FirewallServiceFacts facts;
    facts.state = 4;
    EXPECT_TRUE(IsRunning(facts));
    facts.state = 1;
    EXPECT_FALSE(IsRunning(facts));
    facts.state = 4;
    facts.serviceError = 1060;
    EXPECT_FALSE(IsRunning(facts));
}

TEST(FirewallServiceCheck, Warns_if_the_service_is_disabled_missing_or_cannot_be_queried)
{
    FirewallServiceFacts facts;
    facts.name = "MpsSvc";
    facts.startType = 4;
    facts.state = 1;
    ExpectFinding(JudgeFirewallService(facts), Verdict::kWarning, "MpsSvc is disabled");
    facts.queryError = 5;
    ExpectFinding(JudgeFirewallService(facts), Verdict::kWarning,
                  "the firewall service cannot be queried: error 5 (access denied)");
    facts.serviceError = 1060;
    ExpectFinding(JudgeFirewallService(facts), Verdict::kWarning,
                  "neither the service MpsSvc nor the service SharedAccess exists");
}

TEST(FirewallServiceCheck, Fails_if_the_service_manager_cannot_be_opened)
{
    FirewallServiceFacts facts;
    facts.managerError = 5;
    ExpectFinding(JudgeFirewallService(facts), Verdict::kFailure,
                  "the service manager cannot be opened: error 5 (access denied)");
}

} // namespace
} // namespace vqrx::test
