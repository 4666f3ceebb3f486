#include "ProcessFacts.h"

#include "ChildProcess.h"
#include "TestService.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(ProcessFacts, Running_process_has_its_program_and_its_time_of_creation)
{
    const std::string program = TestProgram("no_windows");
    FILETIME before{};
    GetSystemTimeAsFileTime(&before);
    const ChildProcess child('"' + program + '"');
    const ProcessFacts facts = ReadProcessFacts(child.Pid());
    EXPECT_EQ(facts.state, ProcessFacts::State::kRunning);
    EXPECT_EQ(facts.processId, child.Pid());
    EXPECT_EQ(facts.image, program);
    const std::int64_t beforeMs =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(before.dwHighDateTime) << 32U) |
                                  before.dwLowDateTime) /
            10000 -
        11644473600000;
    EXPECT_GE(facts.createdMs, beforeMs - 20); // the two clocks tick apart
    EXPECT_LT(facts.createdMs, beforeMs + 60000);
}

TEST(ProcessFacts, Ended_process_is_gone_even_while_a_handle_of_it_is_open)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_EQ(ReadProcessFacts(child.Pid()).state, ProcessFacts::State::kGone);
    EXPECT_EQ(ReadProcessFacts(4294967280U).state, ProcessFacts::State::kGone);
    EXPECT_EQ(ReadProcessFacts(0).state, ProcessFacts::State::kGone);
}

TEST(ProcessFacts, Two_paths_of_one_file_are_the_same_file)
{
    const std::string program = TestProgram("quits");
    EXPECT_TRUE(IsSameFile(program, OwnFolder() + R"(\..\programs\QUITS.exe)"));
    EXPECT_FALSE(IsSameFile(program, TestProgram("no_windows")));
    EXPECT_FALSE(IsSameFile(program + "x", program + "x"));
}

TEST(ProcessFacts, Command_of_a_service_names_its_program)
{
    const TestService service("DmFactsTest");
    EXPECT_NE(CommandOfService("DmFactsTest").find("test_service"), std::string::npos);
    EXPECT_EQ(CommandOfService("DmNoSuchService"), "");
}

} // namespace
} // namespace vqrx::test
