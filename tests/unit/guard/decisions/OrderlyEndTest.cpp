#include "OrderlyEnd.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using guard::v0::EndedSupervisor;
using guard::v0::WasOrdered;

constexpr std::int64_t kCreatedMs = 1'000'000'000'000;
constexpr std::int64_t kYearMs = 365LL * 24 * 3600 * 1000;

// Makes records that are one second apart. The first one is written 100 ms after the creation of
// the supervisor.
std::vector<client::v0::Record> Records(const std::vector<std::string>& texts,
                                        std::int64_t firstMs = kCreatedMs + 100)
{
    std::vector<client::v0::Record> records;
    for (const std::string& text : texts) {
        client::v0::Record record;
        record.timeMs = firstMs + 1000 * static_cast<std::int64_t>(records.size());
        record.text = text;
        records.push_back(record);
    }
    return records;
}

// Makes a supervisor that a guard found and watched from its creation on.
EndedSupervisor Ended(std::uint32_t exitCode, bool wasPublished)
{
    return {kCreatedMs, false, {}, exitCode, wasPublished};
}

// Makes a published supervisor with exit code 0 that a guard started after these records.
EndedSupervisor StartedAfter(const std::vector<client::v0::Record>& records)
{
    return {kCreatedMs, true, records.back(), 0, true};
}

std::vector<client::v0::Record> operator+(std::vector<client::v0::Record> first,
                                          const std::vector<client::v0::Record>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const std::string kStarted = "Deamon Thread started";
const std::string kEnding = "Deamon Thread is exiting...";

TEST(OrderlyEnd, Request_of_a_client_is_an_order_whatever_follows)
{
    for (const std::uint32_t exitCode : {0U, 1U, 2U, 0xC0000005U}) {
        EXPECT_TRUE(WasOrdered(Ended(exitCode, true), Records({kStarted, "Exit"})));
    }
    EXPECT_TRUE(WasOrdered(Ended(0, false), Records({kStarted, "Exit", kEnding})));
}

TEST(OrderlyEnd, Complete_shutdown_is_an_order)
{
    const auto records = Records({kStarted, "3 Processes still registered", kEnding});
    EXPECT_TRUE(WasOrdered(Ended(0, true), records));
    EXPECT_TRUE(WasOrdered(Ended(2, true), records)); // COM did not let the thread go
}

TEST(OrderlyEnd, Exit_code_0_alone_is_no_order)
{
    EXPECT_FALSE(WasOrdered(Ended(0, true), Records({kStarted})));
    EXPECT_FALSE(WasOrdered(Ended(0, true), {}));
}

TEST(OrderlyEnd, Crash_while_the_last_records_are_written_is_no_order)
{
    EXPECT_FALSE(WasOrdered(Ended(0xC0000005, true), Records({kStarted, kEnding})));
    EXPECT_FALSE(WasOrdered(Ended(1, true), Records({kStarted, kEnding})));
}

TEST(OrderlyEnd, Start_that_failed_is_no_order)
{
    EXPECT_FALSE(WasOrdered(Ended(1, false), Records({kStarted, kEnding})));
    EXPECT_FALSE(WasOrdered(Ended(0, false), Records({kStarted, kEnding})));
}

TEST(OrderlyEnd, Shutdown_that_was_given_up_is_an_order_with_its_exit_code)
{
    const auto records =
        Records({kStarted, "Shutdown given up: a call of a client has not ended in time"});
    EXPECT_TRUE(WasOrdered(Ended(2, true), records));
    EXPECT_FALSE(WasOrdered(Ended(3, true), records));
}

TEST(OrderlyEnd, Records_of_earlier_supervisors_do_not_count)
{
    EXPECT_FALSE(
        WasOrdered(Ended(0, true), Records({kStarted, "Exit", kEnding}, kCreatedMs - 10000)));
    // The supervisor before ended less than a second ago.
    EXPECT_FALSE(
        WasOrdered(Ended(0, true), Records({"Exit", kEnding, kStarted}, kCreatedMs - 500)));
}

TEST(OrderlyEnd, Supervisor_that_was_refused_beside_this_one_is_no_order)
{
    EXPECT_FALSE(WasOrdered(Ended(0, true), Records({kStarted, kStarted, kEnding})));
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, kStarted, kEnding, kEnding})));
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, kStarted, kEnding, "Exit"})));
    auto inOneMillisecond = Records({kStarted, kStarted, kEnding});
    inOneMillisecond[1].timeMs = inOneMillisecond[0].timeMs;
    EXPECT_FALSE(WasOrdered(Ended(0, true), inOneMillisecond));
}

TEST(OrderlyEnd, Next_supervisor_that_has_started_already_does_not_hide_the_order)
{
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, "Exit", kEnding, kStarted})));
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, kEnding, kStarted})));
}

TEST(OrderlyEnd, Order_from_before_the_watch_does_not_count)
{
    // Somebody ended the supervisor and then started the guard, which found it ending.
    const auto records = Records({kStarted, "Exit", kEnding});
    EndedSupervisor ended = Ended(0, false);
    ended.lastBefore = records[1];
    EXPECT_FALSE(WasOrdered(ended, records));
    ended.lastBefore = records[0];
    EXPECT_TRUE(WasOrdered(ended, records));
}

// The battery of the clock is empty: the log is from the future.
TEST(OrderlyEnd, Records_from_before_the_start_do_not_count_if_the_clock_is_late)
{
    const auto old = Records({kStarted, "Exit", kEnding}, kCreatedMs + kYearMs);
    EXPECT_FALSE(WasOrdered(StartedAfter(old), old));
    EXPECT_FALSE(WasOrdered(StartedAfter(old), old + Records({kStarted})));
    EXPECT_TRUE(WasOrdered(StartedAfter(old), old + Records({kStarted, "Exit", kEnding})));
    EXPECT_TRUE(WasOrdered(StartedAfter(old), old + Records({kStarted, kEnding})));
}

TEST(OrderlyEnd, Earlier_start_in_the_log_begins_the_records_of_a_found_supervisor_anew)
{
    const auto old = Records({kStarted, "Exit", kEnding}, kCreatedMs + kYearMs);
    EXPECT_FALSE(WasOrdered(Ended(0, true), old + Records({kStarted})));
    EXPECT_TRUE(WasOrdered(Ended(0, true), old + Records({kStarted, "Exit", kEnding})));
}

TEST(OrderlyEnd, Clock_that_is_set_back_during_the_start_hides_no_order)
{
    const auto old = Records({kStarted, kEnding}, kCreatedMs - 60000);
    EXPECT_TRUE(
        WasOrdered(StartedAfter(old), old + Records({kStarted, "Exit"}, kCreatedMs - 20000)));
}

TEST(OrderlyEnd, All_records_count_if_the_log_no_longer_holds_the_last_one_before_the_start)
{
    const auto old = Records({kStarted, kEnding}, kCreatedMs - 60000);
    EXPECT_TRUE(WasOrdered(StartedAfter(old), Records({"Exit", kEnding})));
}

} // namespace
} // namespace vqrx::test
