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

// Makes a supervisor that ended while a guard watched it from its creation on.
EndedSupervisor Ended(std::uint32_t exitCode, bool wasPublished)
{
    return {kCreatedMs, kCreatedMs, exitCode, wasPublished};
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
}

TEST(OrderlyEnd, Next_supervisor_that_has_started_already_does_not_hide_the_order)
{
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, "Exit", kEnding, kStarted})));
    EXPECT_TRUE(WasOrdered(Ended(0, true), Records({kStarted, kEnding, kStarted})));
}

TEST(OrderlyEnd, Order_from_before_the_watch_does_not_count)
{
    // Somebody ended the supervisor and then started the guard, which found it ending.
    EndedSupervisor ended = Ended(0, false);
    ended.watchedSinceMs = kCreatedMs + 5000;
    EXPECT_FALSE(WasOrdered(ended, Records({kStarted, "Exit", kEnding})));
    ended.watchedSinceMs = kCreatedMs + 1100; // the time of the record
    EXPECT_TRUE(WasOrdered(ended, Records({kStarted, "Exit", kEnding})));
}

} // namespace
} // namespace vqrx::test
