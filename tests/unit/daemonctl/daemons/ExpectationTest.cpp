#include "Expectation.h"

#include "SomeDaemons.h"

#include <gtest/gtest.h>

#include <optional>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(Expectation, Each_program_has_a_daemon_of_its_own_or_a_reason)
{
    const auto daemons = SomeDaemons();
    const auto programs = ParseExpectFile("a.exe\nno.exe\nother.exe\na.exe\na.exe\n").programs;
    const auto results = CheckExpectations(programs, daemons, 1'100'000, 0);
    ASSERT_EQ(results.size(), 5U);
    EXPECT_EQ(results[0].daemon, 0U);
    EXPECT_EQ(results[1].daemon, std::nullopt);
    EXPECT_EQ(results[1].note, "a daemon of this program cannot be started");
    EXPECT_EQ(results[2].note, "no daemon runs it");
    EXPECT_EQ(results[3].daemon, 2U);
    EXPECT_EQ(results[4].note, "no daemon runs it");
}

TEST(Expectation, Process_younger_than_the_minimum_does_not_count)
{
    const auto programs = ParseExpectFile("a.exe\n").programs;
    EXPECT_EQ(CheckExpectations(programs, SomeDaemons(), 1'059'999, 60000)[0].note,
              "daemon 0 has run for 59 s, which is less than 60 s");
    EXPECT_EQ(CheckExpectations(programs, SomeDaemons(), 1'060'000, 60000)[0].daemon, 0U);
}

TEST(Expectation, Batch_file_that_was_handed_over_counts)
{
    auto daemons = SomeDaemons();
    daemons.resize(1);
    daemons[0].attached = true;
    daemons[0].command = "C:\\windows\\system32\\cmd.exe /s/c C:\\FW\\run.bat 1  ";
    const auto programs = ParseExpectFile("run.bat 1\n").programs;
    EXPECT_EQ(CheckExpectations(programs, daemons, 1'100'000, 0)[0].daemon, 0U);
    daemons[0].state = RunState::kEnded;
    EXPECT_EQ(CheckExpectations(programs, daemons, 1'100'000, 0)[0].note, "daemon 0 has ended");
}

TEST(Expectation, Daemon_in_a_crash_loop_does_not_count_even_if_it_has_a_process)
{
    auto daemons = SomeDaemons();
    daemons.resize(1);
    daemons[0].state = RunState::kRestarting;
    daemons[0].recent.lastHour = 41;
    const auto programs = ParseExpectFile("a.exe\n").programs;
    const auto results = CheckExpectations(programs, daemons, 1'100'000, 0);
    EXPECT_EQ(results[0].daemon, std::nullopt);
    EXPECT_EQ(
        results[0].note,
        "daemon 0 ends again and again: 41 restarts in the last hour, last exit: exit code 3");
}

} // namespace
} // namespace vqrx::test
