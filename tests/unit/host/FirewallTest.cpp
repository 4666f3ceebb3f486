#include "Firewall.h"

#include "CapturingLogger.h"
#include "StandInFirewall.h"
#include "TestService.h"
#include "ThreadLocale.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using host::v0::Firewall;
using Line = CapturingLogger::Line;
using Lines = std::vector<Line>;
using testing::ElementsAre;

constexpr auto kDenied = static_cast<HRESULT>(0x80070005);

class FirewallTest : public ::testing::Test {
protected:
    FirewallTest() { service_.Start(); }

    // Makes a Firewall and drops the lines that its constructor logged.
    Firewall& Bound()
    {
        Make();
        logger_.Clear();
        return *firewall_;
    }

    void Make()
    {
        firewall_ = std::make_unique<Firewall>("vantoro_agent", &logger_,
                                               [this](std::uint32_t s) { slept_.push_back(s); });
    }

    // Expects that exactly one line was logged and that no rule was added.
    void ExpectOneLineAndNoRule(const std::string& text)
    {
        EXPECT_EQ((Lines{{0, text}}), logger_.Lines());
        EXPECT_TRUE(StoredFirewallRules().empty());
        EXPECT_EQ(0, TheFirewallScript().adds);
    }

    system::com::v1::ComApartment apartment_;
    TestService service_{"MpsSvc"};
    StandInFirewall standIn_;
    CapturingLogger logger_;
    std::vector<std::uint32_t> slept_;
    std::unique_ptr<Firewall> firewall_;
};

} // namespace

TEST_F(FirewallTest, Constructor_detects_the_firewall_if_its_service_runs)
{
    Make();
    EXPECT_EQ((Lines{{2, "Detected Windows Firewall with Advanced Security"}}), logger_.Lines());
    EXPECT_TRUE(slept_.empty());
}

TEST_F(FirewallTest, Constructor_waits_for_the_endpoint_with_doubling_pauses)
{
    TheFirewallScript().endpointMissing = 3;
    Make();
    EXPECT_EQ((Lines{{2, "Detected Windows Firewall with Advanced Security"},
                     {1, "Firewall: service is not yet started, waiting 1 s"},
                     {1, "Firewall: service is not yet started, waiting 2 s"},
                     {1, "Firewall: service is not yet started, waiting 4 s"}}),
              logger_.Lines());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 4}), slept_);
    firewall_->AllowApplication("a.exe");
    EXPECT_EQ(1, TheFirewallScript().adds);
}

TEST_F(FirewallTest, New_rule_allows_the_program_every_protocol_in_every_profile)
{
    Bound().AllowApplication("C:\\FW\\App\\video.exe");
    EXPECT_TRUE(logger_.Lines().empty());
    const auto rules = StoredFirewallRules();
    ASSERT_EQ(1U, rules.size());
    const auto& [name, rule] = *rules.begin();
    EXPECT_EQ(L"allowing C:\\FW\\App\\video.exe", name);
    EXPECT_EQ((FirewallRule{L"C:\\FW\\App\\video.exe", 256, 0x7FFFFFFF, 1, -1}), rule);
    EXPECT_THAT(TheFirewallScript().put, ElementsAre("Name", "ApplicationName", "Protocol",
                                                     "Profiles", "Action", "Enabled"));
}

TEST_F(FirewallTest, Program_that_is_allowed_twice_gets_one_rule)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("a.exe");
    EXPECT_EQ(1, TheFirewallScript().adds);
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(FirewallTest, Existing_rule_of_the_same_name_stays_as_it_is)
{
    const FirewallRule foreign{L"other.exe", 6, 1, 0, 0};
    Firewall& firewall = Bound();
    StoreFirewallRule(L"allowing a.exe", foreign);
    firewall.AllowApplication("a.exe");
    EXPECT_EQ(foreign, StoredFirewallRules().at(L"allowing a.exe"));
    EXPECT_EQ(0, TheFirewallScript().adds);
}

TEST_F(FirewallTest, Rule_is_removed_by_its_name)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("b.exe");
    firewall.RemoveApplication("a.exe");
    EXPECT_EQ(0U, StoredFirewallRules().count(L"allowing a.exe"));
    EXPECT_EQ(1U, StoredFirewallRules().count(L"allowing b.exe"));
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(FirewallTest, Removal_of_a_rule_that_does_not_exist_is_logged)
{
    Bound().RemoveApplication("a.exe");
    EXPECT_EQ((Lines{{0, "Firewall: Missing firewall rule : 0x80070002"}}), logger_.Lines());
}

TEST_F(FirewallTest, Paths_that_differ_in_letter_case_give_rules_with_different_names)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("A.exe");
    EXPECT_EQ((std::vector<std::wstring>{L"allowing a.exe", L"allowing A.exe"}),
              TheFirewallScript().askedFor);
    EXPECT_EQ(2, TheFirewallScript().adds);
    // The stand-in ignores letter case, so the second rule replaces the first.
    EXPECT_EQ(1U, StoredFirewallRules().size());
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(FirewallTest, Path_beyond_ASCII_is_converted_from_the_code_page_of_the_thread)
{
    const RussianThread thread;
    Firewall& firewall = Bound();
    firewall.AllowApplication("caf\xE9.exe");
    const auto rules = StoredFirewallRules();
    ASSERT_EQ(1U, rules.count(L"allowing caf\u0439.exe"));
    EXPECT_EQ(L"caf\u0439.exe", rules.at(L"allowing caf\u0439.exe").application);
    firewall.RemoveApplication("caf\xE9.exe");
    EXPECT_TRUE(StoredFirewallRules().empty());
}

TEST_F(FirewallTest, Every_object_of_the_firewall_is_released)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("a.exe");
    firewall.RemoveApplication("a.exe");
    firewall_.reset();
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(FirewallTest, No_rule_is_made_if_the_collection_of_rules_cannot_be_obtained)
{
    Firewall& firewall = Bound();
    TheFirewallScript().rules = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to retrieve firewall rules collection: 0x80070005");
}

TEST_F(FirewallTest, No_rule_is_removed_if_the_collection_of_rules_cannot_be_obtained)
{
    Firewall& firewall = Bound();
    TheFirewallScript().rules = kDenied;
    firewall.RemoveApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to retrieve firewall rules collection: 0x80070005");
}

TEST_F(FirewallTest, Failure_to_create_a_rule_is_logged_and_no_rule_is_added)
{
    Firewall& firewall = Bound();
    TheFirewallScript().createRule = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed create rule.: 0x80070005");
}

TEST_F(FirewallTest, Failure_to_set_a_property_is_logged_and_no_rule_is_added)
{
    struct Case {
        HRESULT FirewallScript::*step;
        const char* line;
    };
    const Case cases[] = {
        {&FirewallScript::putName,
         "Firewall: Failed to sets the name property for this rule.: 0x80070005"},
        {&FirewallScript::putApplicationName,
         "Firewall: Failed to sets the application name property for this rule.: 0x80070005"},
        {&FirewallScript::putProtocol,
         "Firewall: Failed to sets the protocol property for this rule.: 0x80070005"},
        {&FirewallScript::putProfiles,
         "Firewall: Failed to sets the profiles property for this rule.: 0x80070005"},
        {&FirewallScript::putAction,
         "Firewall: Failed to sets the action property for this rule.: 0x80070005"},
        {&FirewallScript::putEnabled, "Firewall: Failed to enabled this rule.: 0x80070005"},
    };
    std::size_t set = 0;
    for (const Case& failing : cases) {
        Firewall& firewall = Bound();
        TheFirewallScript().*failing.step = kDenied;
        firewall.AllowApplication("a.exe");
        TheFirewallScript().*failing.step = S_OK;
        ExpectOneLineAndNoRule(failing.line);
        EXPECT_EQ(++set, TheFirewallScript().put.size()) << "properties after the failure are set";
    }
    firewall_.reset();
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(FirewallTest, Failure_to_add_a_rule_is_logged)
{
    Firewall& firewall = Bound();
    TheFirewallScript().add = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to add rule.: 0x80070005");
}

TEST_F(FirewallTest, Without_the_advanced_firewall_every_call_only_logs_a_line)
{
    TheFirewallScript().createPolicy2 = kDenied;
    Make();
    EXPECT_TRUE(logger_.Lines().empty()); // the constructor does not log this failure
    firewall_->AllowApplication("a.exe");
    firewall_->RemoveApplication("a.exe");
    const Line line{0, "Firewall: Windows Firewall with Advanced Security not available !"};
    EXPECT_EQ((Lines{line, line}), logger_.Lines());
    EXPECT_TRUE(StoredFirewallRules().empty());
}

TEST_F(FirewallTest, Firewall_is_not_available_if_its_manager_cannot_be_created)
{
    TheFirewallScript().createManager = kDenied;
    Make();
    EXPECT_EQ((Lines{{0, "Firewall: CoCreateInstance failed: 0x80070005"}}), logger_.Lines());
    firewall_->AllowApplication("a.exe");
    EXPECT_EQ(2U, logger_.Lines().size());
}

TEST_F(FirewallTest, Firewall_is_not_available_if_the_local_policy_cannot_be_obtained)
{
    TheFirewallScript().localPolicy = kDenied;
    Make();
    EXPECT_EQ((Lines{{0, "Firewall: get_LocalPolicy failed: 0x80070005"}}), logger_.Lines());
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(FirewallTest, Rules_are_made_even_if_the_current_profile_cannot_be_read)
{
    TheFirewallScript().currentProfile = kDenied;
    Make();
    EXPECT_EQ((Line{0, "Firewall: get_CurrentProfile failed: 0x80070005"}), logger_.Lines().at(1));
    firewall_->AllowApplication("a.exe");
    EXPECT_EQ(1, TheFirewallScript().adds);
}

TEST(FirewallWithoutServiceTest, Every_call_only_logs_that_the_firewall_is_not_available)
{
    RequireNoService("MpsSvc");
    CapturingLogger logger;
    Firewall firewall("vantoro_agent", &logger);
    EXPECT_EQ((Lines{{0, "Firewall: Could not open service (1060)"}}), logger.Lines());
    logger.Clear();
    firewall.AllowApplication("a.exe");
    EXPECT_EQ((Lines{{0, "Firewall: Windows Firewall with Advanced Security not available !"}}),
              logger.Lines());
}

TEST(FirewallInOtherApartmentTest, Constructor_throws_the_result_with_which_COM_refused)
{
    std::thread([] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        CapturingLogger logger;
        try {
            Firewall firewall("vantoro_agent", &logger);
            ADD_FAILURE();
        } catch (const COMException& exception) {
            EXPECT_EQ(RPC_E_CHANGED_MODE, exception.Code());
        }
        CoUninitialize();
    }).join();
}

} // namespace vqrx::test
