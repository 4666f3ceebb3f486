#include "FirewallRuleVerdicts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Program = FirewallRuleFacts::Program;
using Names = std::vector<std::string>;

TEST(FirewallRules, are_the_supervisors_when_named_after_their_program)
{
    EXPECT_TRUE(IsSupervisorsRule({R"(allowing C:\a.exe)", R"(c:\A.EXE)", Program::there}));
    EXPECT_FALSE(IsSupervisorsRule({R"(allowing C:\a.exe)", R"(C:\b.exe)", Program::there}));
    EXPECT_FALSE(IsSupervisorsRule({"allowing everything", "", Program::there}));
    EXPECT_FALSE(IsSupervisorsRule({R"(Allowing C:\a.exe)", R"(C:\a.exe)", Program::there}));
}

TEST(FirewallRules, are_dead_when_their_program_is_gone)
{
    EXPECT_EQ(DeadRules({0,
                         {{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::gone},
                          {R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::there}},
                         {}}),
              Names{R"(allowing C:\a.exe)"});
}

TEST(FirewallRules, of_a_drive_that_is_not_there_are_not_dead)
{
    EXPECT_EQ(DeadRules({0, {{R"(allowing E:\a.exe)", R"(E:\a.exe)", Program::unknown}}, {}}),
              Names{});
}

TEST(FirewallRules, of_others_are_never_dead_nor_is_one_of_the_same_name)
{
    EXPECT_EQ(DeadRules({0,
                         {{R"(allowing C:\a.exe)", R"(C:\other.exe)", Program::gone},
                          {R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::gone}},
                         {}}),
              Names{});
}

TEST(FirewallRules, of_a_program_that_a_daemon_needs_are_kept_while_it_is_gone)
{
    const FirewallRuleFacts rule{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::gone};
    EXPECT_EQ(DeadRules({0, {rule}, {R"(c:\A.exe -x )"}}), Names{});
    EXPECT_EQ(DeadRules({0, {rule}, {R"(C:\a.exe2 )", R"(D:\a.exe )"}}),
              Names{R"(allowing C:\a.exe)"});
}

TEST(FirewallRules, that_are_dead_twice_are_told_twice)
{
    const FirewallRuleFacts rule{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::gone};
    EXPECT_EQ(DeadRules({0, {rule, rule}, {}}),
              (Names{R"(allowing C:\a.exe)", R"(allowing C:\a.exe)"}));
}

TEST(FirewallRules, are_duplicate_when_they_let_one_program_through_twice)
{
    EXPECT_EQ(DuplicateRules({{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::there},
                              {R"(allowing C:\A.exe)", R"(C:\A.exe)", Program::there},
                              {R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::there}}),
              Names{R"(allowing C:\A.exe)"});
    EXPECT_EQ(DuplicateRules({{R"(allowing all)", R"(C:\a.exe)", Program::there},
                              {R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::there}}),
              Names{});
}

} // namespace
} // namespace vqrx::test
