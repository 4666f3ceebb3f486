#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "log_perf/time/Clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::CurrentTimestamp;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::MillisecondsOf;
using testing::ElementsAre;

std::vector<std::string> Numbered(int first, int last)
{
    std::vector<std::string> texts;
    for (int number = first; number <= last; ++number) {
        texts.push_back("m" + std::to_string(number));
    }
    return texts;
}

TEST(LibLogPerf, hands_level_and_text_of_a_message_to_a_sink_unchanged)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    logger.Log(0, "Start %s", "a.exe");
    logger.Log(3, "%d%%", 7);
    logger.Log(-5, "low");
    logger.Log(2147483647, "high");
    ASSERT_TRUE(sink.WaitForCount(4));
    const auto records = sink.Records();
    EXPECT_EQ(0, records[0].level);
    EXPECT_EQ("Start a.exe", records[0].text);
    EXPECT_EQ(3, records[1].level);
    EXPECT_EQ("7%", records[1].text);
    EXPECT_EQ(-5, records[2].level);
    EXPECT_EQ(2147483647, records[3].level);
}

TEST(LibLogPerf, flattens_and_cuts_messages)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    logger.Log(2, "%s", "first\r\nsecond");
    logger.Log(2, "%s", std::string(2000, 'x').c_str());
    ASSERT_TRUE(sink.WaitForCount(2));
    EXPECT_THAT(sink.Texts(), ElementsAre("first second", std::string(1040, 'x')));
}

TEST(LibLogPerf, stamps_a_message_when_it_is_logged_not_when_it_is_written)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    sink.BlockNextWrite();
    const auto before = MillisecondsOf(CurrentTimestamp());
    logger.Log(2, "stamped");
    const auto after = MillisecondsOf(CurrentTimestamp());
    ASSERT_TRUE(sink.WaitUntilBlocked());
    while (MillisecondsOf(CurrentTimestamp()) <= after) {
        std::this_thread::yield();
    }
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(1));
    const auto stamp = MillisecondsOf(sink.Records()[0].timestamp);
    EXPECT_LE(before, stamp);
    EXPECT_LE(stamp, after);
}

TEST(LibLogPerf, delivers_each_message_once_to_a_sink_that_was_added_twice)
{
    CapturingSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        logger.AddSink(&sink);
        logger.Log(2, "once");
    }
    EXPECT_THAT(sink.Texts(), ElementsAre("once"));
}

TEST(LibLogPerf, ignores_a_null_sink)
{
    CapturingSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(nullptr);
        logger.AddSink(&sink);
        logger.AddSink(nullptr);
        logger.Log(2, "still here");
    }
    EXPECT_THAT(sink.Texts(), ElementsAre("still here"));
}

TEST(LibLogPerf, without_a_sink_takes_messages_and_ends)
{
    LibLogPerf logger;
    logger.Log(2, "nobody hears this");
}

TEST(LibLogPerf, writes_to_the_sinks_in_the_order_of_their_addresses)
{
    std::array<CapturingSink, 3> sinks;
    std::vector<int> order; // the worker's alone until the logger is gone
    for (int i = 0; i < 3; ++i) {
        sinks.at(static_cast<std::size_t>(i)).SetHook([&order, i](const auto&) {
            order.push_back(i);
        });
    }
    {
        LibLogPerf logger;
        logger.AddSink(&sinks[2]);
        logger.AddSink(&sinks[0]);
        logger.AddSink(&sinks[1]);
        logger.Log(2, "to all");
    }
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(LibLogPerf, takes_a_sink_while_another_one_writes_and_gives_it_later_messages_only)
{
    CapturingSink slow;
    CapturingSink added;
    {
        LibLogPerf logger;
        logger.AddSink(&slow);
        slow.BlockNextWrite();
        logger.Log(2, "early");
        ASSERT_TRUE(slow.WaitUntilBlocked());
        logger.AddSink(&added);
        slow.Release();
        logger.Log(2, "late");
    }
    EXPECT_THAT(slow.Texts(), ElementsAre("early", "late"));
    EXPECT_THAT(added.Texts(), ElementsAre("late"));
}

TEST(LibLogPerf, does_not_make_a_caller_wait_for_a_sink)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    sink.BlockNextWrite();
    for (const std::string& text : Numbered(1, 100)) {
        logger.Log(2, "%s", text.c_str()); // would never return
    }
    ASSERT_TRUE(sink.WaitUntilBlocked());
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(100));
    EXPECT_EQ(Numbered(1, 100), sink.Texts());
}

TEST(LibLogPerf, may_be_called_by_a_sink_that_is_writing)
{
    CapturingSink sink;
    LibLogPerf logger;
    sink.SetHook([&logger](const CapturingSink::Record& record) {
        if (record.text == "question") {
            logger.Log(1, "answer");
        }
    });
    logger.AddSink(&sink);
    logger.Log(2, "question");
    ASSERT_TRUE(sink.WaitForCount(2));
    EXPECT_THAT(sink.Texts(), ElementsAre("question", "answer"));
}

TEST(LibLogPerf, keeps_the_order_of_every_thread_that_logs)
{
    CapturingSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&logger, thread] {
                for (int i = 0; i < 200; ++i) {
                    logger.Log(thread, "%d", i);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    ASSERT_EQ(800U, sink.Records().size());
    std::array<int, 4> next{};
    for (const auto& record : sink.Records()) {
        int& expected = next.at(static_cast<std::size_t>(record.level));
        EXPECT_EQ(std::to_string(expected), record.text);
        ++expected;
    }
}

TEST(LibLogPerf, when_destroyed_delivers_everything_that_is_still_queued)
{
    CapturingSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        sink.BlockNextWrite();
        for (const std::string& text : Numbered(1, 900)) {
            logger.Log(2, "%s", text.c_str());
        }
        ASSERT_TRUE(sink.WaitUntilBlocked());
        sink.Release();
    }
    EXPECT_EQ(Numbered(1, 900), sink.Texts());
}

TEST(LibLogPerf, is_made_and_destroyed_many_times_over)
{
    CapturingSink sink;
    for (int i = 0; i < 50; ++i) {
        LibLogPerf logger;
        logger.AddSink(&sink);
        logger.Log(2, "m%d", i);
    }
    EXPECT_EQ(Numbered(0, 49), sink.Texts());
}

} // namespace
} // namespace vqrx::test
