#include "Firewall.h"

#include "CapturingLogger.h"
#include "StandInFirewall.h"
#include "TestService.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using host::v0::Firewall;
using Line = CapturingLogger::Line;
using Lines = std::vector<Line>;

constexpr auto kDenied = static_cast<HRESULT>(0x80070005);

class Rules : public ::testing::Test {
protected:
    Rules() { service_.Start(); }

    // Makes a firewall; forgets the lines of its construction.
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

    // The one line that a failure leaves, and no rule.
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

TEST_F(Rules, firewall_is_detected_when_the_service_runs)
{
    Make();
    EXPECT_EQ((Lines{{2, "Detected Windows Firewall with Advanced Security"}}), logger_.Lines());
    EXPECT_TRUE(slept_.empty());
}

TEST_F(Rules, are_made_with_the_properties_that_let_a_program_be_reached)
{
    Bound().AllowApplication("C:\\FW\\App\\video.exe");
    EXPECT_TRUE(logger_.Lines().empty());
    const auto rules = StoredFirewallRules();
    ASSERT_EQ(1U, rules.size());
    const auto& [name, rule] = *rules.begin();
    EXPECT_EQ(L"allowing C:\\FW\\App\\video.exe", name);
    EXPECT_EQ((FirewallRule{L"C:\\FW\\App\\video.exe", 256, 0x7FFFFFFF, 1, -1}), rule);
}

TEST_F(Rules, are_made_once_for_a_program_that_is_allowed_twice)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("a.exe");
    EXPECT_EQ(1, TheFirewallScript().adds);
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(Rules, that_exist_already_are_left_as_they_are)
{
    const FirewallRule foreign{L"other.exe", 6, 1, 0, 0};
    Firewall& firewall = Bound();
    StoreFirewallRule(L"allowing a.exe", foreign);
    firewall.AllowApplication("a.exe");
    EXPECT_EQ(foreign, StoredFirewallRules().at(L"allowing a.exe"));
    EXPECT_EQ(0, TheFirewallScript().adds);
}

TEST_F(Rules, are_removed_by_their_name)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("b.exe");
    firewall.RemoveApplication("a.exe");
    EXPECT_EQ(0U, StoredFirewallRules().count(L"allowing a.exe"));
    EXPECT_EQ(1U, StoredFirewallRules().count(L"allowing b.exe"));
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(Rules, that_never_were_are_said_to_be_missing_when_they_are_removed)
{
    Bound().RemoveApplication("a.exe");
    EXPECT_EQ((Lines{{0, "Firewall: Missing firewall rule : 0x80070002"}}), logger_.Lines());
}

TEST_F(Rules, of_paths_that_differ_in_letter_case_have_different_names_and_the_firewall_decides)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("A.exe");
    EXPECT_EQ((std::vector<std::wstring>{L"allowing a.exe", L"allowing A.exe"}),
              TheFirewallScript().askedFor);
    EXPECT_EQ(2, TheFirewallScript().adds);
    EXPECT_EQ(1U,
              StoredFirewallRules().size()); // this one's decision: the second replaces the first
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(Rules, for_paths_beyond_ascii_are_named_in_the_threads_code_page)
{
    Bound().AllowApplication("caf\xE9.exe");
    wchar_t expected[16] = {};
    MultiByteToWideChar(CP_THREAD_ACP, 0, "caf\xE9.exe", -1, expected, 16);
    EXPECT_EQ(1U, StoredFirewallRules().count(std::wstring(L"allowing ") + expected));
}

TEST_F(Rules, leave_no_object_behind)
{
    Firewall& firewall = Bound();
    firewall.AllowApplication("a.exe");
    firewall.AllowApplication("a.exe");
    firewall.RemoveApplication("a.exe");
    firewall_.reset();
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(Rules, cannot_be_made_when_the_collection_cannot_be_had)
{
    Firewall& firewall = Bound();
    TheFirewallScript().rules = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to retrieve firewall rules collection: 0x80070005");
}

TEST_F(Rules, cannot_be_removed_when_the_collection_cannot_be_had)
{
    Firewall& firewall = Bound();
    TheFirewallScript().rules = kDenied;
    firewall.RemoveApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to retrieve firewall rules collection: 0x80070005");
}

TEST_F(Rules, that_cannot_be_created_are_not_added)
{
    Firewall& firewall = Bound();
    TheFirewallScript().createRule = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed create rule.: 0x80070005");
}

TEST_F(Rules, whose_properties_cannot_be_set_are_not_added)
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
    for (const Case& failing : cases) {
        Firewall& firewall = Bound();
        TheFirewallScript().*failing.step = kDenied;
        firewall.AllowApplication("a.exe");
        TheFirewallScript().*failing.step = S_OK;
        ExpectOneLineAndNoRule(failing.line);
    }
    firewall_.reset();
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(Rules, that_cannot_be_added_are_said_to_have_failed)
{
    Firewall& firewall = Bound();
    TheFirewallScript().add = kDenied;
    firewall.AllowApplication("a.exe");
    ExpectOneLineAndNoRule("Firewall: Failed to add rule.: 0x80070005");
}

TEST_F(Rules, are_not_available_without_the_advanced_firewall)
{
    TheFirewallScript().createPolicy2 = kDenied;
    Make();
    EXPECT_TRUE(logger_.Lines().empty()); // that failure is not logged
    firewall_->AllowApplication("a.exe");
    firewall_->RemoveApplication("a.exe");
    const Line line{0, "Firewall: Windows Firewall with Advanced Security not available !"};
    EXPECT_EQ((Lines{line, line}), logger_.Lines());
    EXPECT_TRUE(StoredFirewallRules().empty());
}

TEST_F(Rules, are_not_available_when_the_firewall_manager_cannot_be_created)
{
    TheFirewallScript().createManager = kDenied;
    Make();
    EXPECT_EQ((Lines{{0, "Firewall: CoCreateInstance failed: 0x80070005"}}), logger_.Lines());
    firewall_->AllowApplication("a.exe");
    EXPECT_EQ(2U, logger_.Lines().size());
}

TEST_F(Rules, are_not_available_when_the_local_policy_cannot_be_had)
{
    TheFirewallScript().localPolicy = kDenied;
    Make();
    EXPECT_EQ((Lines{{0, "Firewall: get_LocalPolicy failed: 0x80070005"}}), logger_.Lines());
    EXPECT_EQ(0, TheFirewallScript().liveObjects);
}

TEST_F(Rules, wait_with_doubling_pauses_for_the_endpoint_of_the_firewall)
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

TEST_F(Rules, can_be_made_although_the_current_profile_failed)
{
    TheFirewallScript().currentProfile = kDenied;
    Make();
    EXPECT_EQ((Line{0, "Firewall: get_CurrentProfile failed: 0x80070005"}), logger_.Lines().at(1));
    firewall_->AllowApplication("a.exe");
    EXPECT_EQ(1, TheFirewallScript().adds);
}

TEST(FirewallWithoutService, only_says_that_it_is_not_available)
{
    CapturingLogger logger;
    Firewall firewall("vantoro_agent", &logger);
    EXPECT_EQ((Lines{{0, "Firewall: Could not open service (1060)"}}), logger.Lines());
    logger.Clear();
    firewall.AllowApplication("a.exe");
    EXPECT_EQ((Lines{{0, "Firewall: Windows Firewall with Advanced Security not available !"}}),
              logger.Lines());
}

TEST(FirewallOnAnotherApartment, raises_the_result_with_which_com_refused)
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
