#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "log_perf/time/Clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
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

TEST(LibLogPerf, Level_and_text_of_a_message_reach_the_sink_unchanged)
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

TEST(LibLogPerf, Messages_become_one_line_and_are_cut)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    logger.Log(2, "%s", "first\r\nsecond");
    logger.Log(2, "%s", std::string(2000, 'x').c_str());
    ASSERT_TRUE(sink.WaitForCount(2));
    EXPECT_THAT(sink.Texts(), ElementsAre("first second", std::string(1040, 'x')));
}

TEST(LibLogPerf, The_time_of_a_message_is_that_of_the_Log_call)
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

TEST(LibLogPerf, A_sink_that_is_added_twice_gets_each_message_once)
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

TEST(LibLogPerf, A_null_sink_is_ignored)
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

TEST(LibLogPerf, A_logger_without_sinks_accepts_messages)
{
    LibLogPerf logger;
    logger.Log(2, "nobody hears this");
}

TEST(LibLogPerf, The_sinks_get_a_message_in_the_order_of_their_addresses)
{
    std::array<CapturingSink, 3> sinks;
    std::vector<int> order; // used by the worker thread only, until the logger is destroyed
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

TEST(LibLogPerf, A_sink_that_is_added_during_a_write_gets_only_later_messages)
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

TEST(LibLogPerf, A_caller_does_not_wait_for_a_sink)
{
    CapturingSink sink;
    LibLogPerf logger;
    logger.AddSink(&sink);
    sink.BlockNextWrite();
    for (const std::string& text : Numbered(1, 100)) {
        logger.Log(2, "%s", text.c_str()); // if it waited, it would never return
    }
    ASSERT_TRUE(sink.WaitUntilBlocked());
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(100));
    EXPECT_EQ(Numbered(1, 100), sink.Texts());
}

TEST(LibLogPerf, A_sink_may_log_while_it_writes)
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

TEST(LibLogPerf, The_messages_of_each_thread_keep_their_order)
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

TEST(LibLogPerf, The_destructor_delivers_every_queued_message)
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

TEST(LibLogPerf, The_constructor_seeds_the_random_numbers_of_the_C_library_with_the_time)
{
    const std::time_t before = std::time(nullptr);
    const LibLogPerf logger;
    const int number = std::rand();
    bool isSeed = false;
    for (std::time_t seed = before; seed <= std::time(nullptr); ++seed) {
        std::srand(static_cast<unsigned>(seed));
        isSeed = isSeed || std::rand() == number;
    }
    EXPECT_TRUE(isSeed);
}

TEST(LibLogPerf, Many_loggers_can_be_made_and_destroyed_in_turn)
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
