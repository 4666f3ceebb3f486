#include "GuardArguments.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Words = std::vector<std::string>;

TEST(GuardArguments, Mode_and_fleet_file_are_read_in_any_order)
{
    const auto service = ParseGuardArguments({"--service"});
    ASSERT_TRUE(service);
    EXPECT_EQ(service->mode, GuardMode::kService);
    EXPECT_EQ(service->fleet, "");
    const auto session = ParseGuardArguments({"--fleet", R"(C:\My Fleet.txt)", "--session"});
    ASSERT_TRUE(session);
    EXPECT_EQ(session->mode, GuardMode::kSession);
    EXPECT_EQ(session->fleet, R"(C:\My Fleet.txt)");
    EXPECT_FALSE(session->trust);
    const auto trusting = ParseGuardArguments({"--trust", "--service"});
    ASSERT_TRUE(trusting);
    EXPECT_TRUE(trusting->trust);
}

TEST(GuardArguments, Wrong_arguments_are_refused)
{
    for (const Words& words :
         {Words{}, Words{"--fleet", "a"}, Words{"--service", "--session"},
          Words{"--service", "--service"}, Words{"--service", "--fleet"},
          Words{"--service", "--fleet", ""}, Words{"--service", "--fleet", "a", "--fleet", "b"},
          Words{"--service", "a"}, Words{"--help"}, Words{"--service", "--trust", "--trust"}}) {
        EXPECT_EQ(ParseGuardArguments(words).has_value(), false) << words.size();
    }
}

TEST(GuardArguments, Command_line_quotes_the_paths_and_is_read_again)
{
    const GuardCommand service{R"(C:\Program Files\DaemonGuard.exe)", {GuardMode::kService, ""}};
    EXPECT_EQ(CommandLineOf(service), R"("C:\Program Files\DaemonGuard.exe" --service)");
    EXPECT_EQ(ParseGuardCommand(CommandLineOf(service)), service);
    const GuardCommand session{R"(C:\DaemonGuard.exe)", {GuardMode::kSession, R"(D:\a b.txt)"}};
    EXPECT_EQ(CommandLineOf(session), R"("C:\DaemonGuard.exe" --session --fleet "D:\a b.txt")");
    EXPECT_EQ(ParseGuardCommand(CommandLineOf(session)), session);
    const GuardCommand trusting{R"(C:\G.exe)", {GuardMode::kService, R"(D:\a.txt)", true}};
    EXPECT_EQ(CommandLineOf(trusting), R"("C:\G.exe" --service --fleet "D:\a.txt" --trust)");
    EXPECT_EQ(ParseGuardCommand(CommandLineOf(trusting)), trusting);
}

TEST(GuardArguments, Command_line_of_a_person_is_read_too)
{
    EXPECT_EQ(ParseGuardCommand(R"(  C:\DaemonGuard.exe	--fleet   D:\"a b".txt --session )"),
              (GuardCommand{R"(C:\DaemonGuard.exe)", {GuardMode::kSession, R"(D:\a b.txt)"}}));
    for (const char* commandLine : {"", "   ", "C:\\DaemonGuard.exe", "notepad.exe C:\\a.txt"}) {
        EXPECT_FALSE(ParseGuardCommand(commandLine)) << commandLine;
    }
}

} // namespace
} // namespace vqrx::test
