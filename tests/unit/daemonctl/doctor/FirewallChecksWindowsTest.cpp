#include "FirewallChecks.h"

#include "ChildProcess.h"
#include "StandInFirewall.h"
#include "TestService.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(FirewallFacts, Service_is_MpsSvc_or_otherwise_SharedAccess_with_its_state)
{
    EXPECT_EQ(GatherFirewallServiceFacts().serviceError, 1060U);
    {
        TestService service("SharedAccess");
        FirewallServiceFacts facts = GatherFirewallServiceFacts();
        EXPECT_EQ(facts.name, "SharedAccess");
        EXPECT_EQ(facts.serviceError, 0U);
        EXPECT_EQ(facts.startType, static_cast<std::uint32_t>(SERVICE_DEMAND_START));
        EXPECT_EQ(facts.state, static_cast<std::uint32_t>(SERVICE_STOPPED));
        service.Start();
        facts = GatherFirewallServiceFacts();
        EXPECT_EQ(facts.state, static_cast<std::uint32_t>(SERVICE_RUNNING));
    }
    const TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    const FirewallServiceFacts facts = GatherFirewallServiceFacts();
    EXPECT_EQ(facts.name, "MpsSvc");
    EXPECT_EQ(facts.startType, static_cast<std::uint32_t>(SERVICE_DISABLED));
}

TEST(FirewallFacts, Rules_are_listed_with_the_state_of_their_programs)
{
    using Program = FirewallRuleFacts::Program;
    const system::com::v1::ComApartment apartment;
    const StandInFirewall firewall;
    const std::string own = TestProgram("quits");
    const std::wstring wideOwn(own.begin(), own.end());
    StoreFirewallRule(L"allowing " + wideOwn, {wideOwn});
    StoreFirewallRule(L"allowing C:\\gone\u00FC.exe", {L"C:\\gone\u00FC.exe"});
    StoreFirewallRule(L"allowing Q:\\drive.exe", {L"Q:\\drive.exe"});
    StoreFirewallRule(L"allowing %TEMP%", {L"%TEMP%"});
    StoreFirewallRule(L"somebody else's", {L"C:\\other.exe"});
    const FirewallRulesFacts facts = GatherFirewallRules();
    EXPECT_EQ(facts.result, 0);
    std::map<std::string, Program> programs;
    for (const FirewallRuleFacts& rule : facts.rules) {
        EXPECT_EQ(rule.name, "allowing " + rule.application);
        programs[rule.application] = rule.program;
    }
    EXPECT_EQ(programs, (std::map<std::string, Program>{{own, Program::kThere},
                                                        {"C:\\gone\xC3\xBC.exe", Program::kGone},
                                                        {"Q:\\drive.exe", Program::kUnknown},
                                                        {"%TEMP%", Program::kThere}}));
    EXPECT_EQ(TheFirewallScript().liveObjects, 0);
}

TEST(FirewallFacts, Rule_is_removed_by_its_name_once)
{
    const system::com::v1::ComApartment apartment;
    const StandInFirewall firewall;
    StoreFirewallRule(L"allowing C:\\gone\u00FC.exe", {L"C:\\gone\u00FC.exe"});
    EXPECT_EQ(RemoveFirewallRule("allowing C:\\gone\xC3\xBC.exe"), 0);
    EXPECT_EQ(StoredFirewallRules().count(L"allowing C:\\gone\u00FC.exe"), 0U);
    EXPECT_LT(RemoveFirewallRule("allowing C:\\gone\xC3\xBC.exe"), 0);
    EXPECT_EQ(TheFirewallScript().liveObjects, 0);
}

TEST(FirewallFacts, Failure_to_list_or_remove_rules_is_returned)
{
    const system::com::v1::ComApartment apartment;
    const StandInFirewall firewall;
    TheFirewallScript().rules = E_ACCESSDENIED;
    EXPECT_EQ(GatherFirewallRules().result, E_ACCESSDENIED);
    EXPECT_EQ(RemoveFirewallRule("allowing x"), E_ACCESSDENIED);
    TheFirewallScript().createPolicy2 = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(GatherFirewallRules().result, REGDB_E_CLASSNOTREG);
}

} // namespace
} // namespace vqrx::test
