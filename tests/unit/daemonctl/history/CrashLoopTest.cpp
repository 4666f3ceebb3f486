#include "CrashLoop.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::DaemonHistory;
using client::v0::RecentRestarts;
using client::v0::RestartsBefore;

constexpr std::int64_t kNow = 1'000'000'000'000;
constexpr std::int64_t kMinute = 60'000;

DaemonHistory StartedBeforeNow(const std::vector<std::int64_t>& agesMs)
{
    DaemonHistory daemon;
    for (const std::int64_t age : agesMs) {
        daemon.intervals.emplace_back().startMs = kNow - age;
    }
    return daemon;
}

TEST(CrashLoop, Restarts_of_the_last_hour_and_of_the_last_ten_minutes_are_counted)
{
    const RecentRestarts recent =
        RestartsBefore(StartedBeforeNow({90 * kMinute, 60 * kMinute, 60 * kMinute - 1, 10 * kMinute,
                                         10 * kMinute - 1, 1}),
                       kNow);
    EXPECT_EQ(recent.lastHour, 4U);
    EXPECT_EQ(recent.lastTenMinutes, 2U);
}

TEST(CrashLoop, First_start_is_no_restart_unless_the_log_no_longer_shows_the_beginning)
{
    DaemonHistory daemon = StartedBeforeNow({3, 2});
    EXPECT_EQ(RestartsBefore(daemon, kNow).lastHour, 1U);
    daemon.beginningSeen = false;
    EXPECT_EQ(RestartsBefore(daemon, kNow).lastHour, 2U);
    daemon.intervals.front().startSeen =
        false; // its start is overwritten: nobody knows when it was
    EXPECT_EQ(RestartsBefore(daemon, kNow).lastHour, 1U);
}

TEST(CrashLoop, Five_restarts_in_ten_minutes_are_a_crash_loop)
{
    EXPECT_FALSE(RestartsBefore(StartedBeforeNow({9, 5, 4, 3, 2}), kNow).IsCrashLoop());
    EXPECT_TRUE(RestartsBefore(StartedBeforeNow({9, 6, 5, 4, 3, 2}), kNow).IsCrashLoop());
}

// The clock was set back: when such a restart was, nobody knows. A look may be a little older than
// the last records.
TEST(CrashLoop, Restarts_that_lie_in_the_future_do_not_count)
{
    const RecentRestarts recent =
        RestartsBefore(StartedBeforeNow({9, -kMinute, -kMinute - 1, -90 * kMinute, 5}), kNow);
    EXPECT_EQ(recent.lastHour, 2U);
    EXPECT_EQ(recent.lastTenMinutes, 2U);
}

TEST(CrashLoop, Daemon_that_has_run_for_ten_minutes_has_left_the_crash_loop)
{
    const DaemonHistory daemon = StartedBeforeNow({9, 6, 5, 4, 3, 2});
    EXPECT_TRUE(RestartsBefore(daemon, kNow + 10 * kMinute - 7).IsCrashLoop());
    EXPECT_FALSE(RestartsBefore(daemon, kNow + 10 * kMinute - 6).IsCrashLoop());
}

} // namespace
} // namespace vqrx::test
