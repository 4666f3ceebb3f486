#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "log_perf/time/Clock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::CurrentTimestamp;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::MillisecondsOf;

class LibLogPerfOverflow : public testing::Test {
protected:
    /// Fills the queue with 1000 messages while the sink is blocked in the write of another one.
    void Fill()
    {
        logger.AddSink(&sink);
        sink.BlockNextWrite();
        logger.Log(2, "0");
        ASSERT_TRUE(sink.WaitUntilBlocked());
        for (int i = 1; i <= 1000; ++i) {
            logger.Log(2, "%d", i);
        }
    }

    static std::vector<std::string> From0To1000()
    {
        std::vector<std::string> texts;
        for (int i = 0; i <= 1000; ++i) {
            texts.push_back(std::to_string(i));
        }
        return texts;
    }

    CapturingSink sink;
    LibLogPerf logger;
};

TEST_F(LibLogPerfOverflow, A_thousand_waiting_messages_are_no_overflow)
{
    Fill();
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(1001));
    logger.Log(2, "end");
    ASSERT_TRUE(sink.WaitForText("end"));
    auto expected = From0To1000();
    expected.emplace_back("end");
    EXPECT_EQ(expected, sink.Texts());
}

TEST_F(LibLogPerfOverflow,
       The_overflow_is_reported_once_at_level_0_instead_of_the_message_that_did_not_fit)
{
    Fill();
    const auto before = MillisecondsOf(CurrentTimestamp());
    logger.Log(3, "did not fit");
    const auto after = MillisecondsOf(CurrentTimestamp());
    logger.Log(0, "dropped");
    logger.Log(0, "dropped as well");
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(1002));
    logger.Log(2, "queued normally");
    ASSERT_TRUE(sink.WaitForText("queued normally"));
    auto expected = From0To1000();
    expected.emplace_back("Overflowed message queue.");
    expected.emplace_back("queued normally");
    EXPECT_EQ(expected, sink.Texts());
    const auto notice = sink.Records()[1001];
    EXPECT_EQ(0, notice.level);
    EXPECT_LE(before, MillisecondsOf(notice.timestamp));
    EXPECT_LE(MillisecondsOf(notice.timestamp), after);
}

TEST_F(LibLogPerfOverflow, After_an_overflow_messages_are_dropped_until_the_queue_is_empty)
{
    Fill();
    sink.SetHook([this](const CapturingSink::Record& record) {
        if (record.text == "1" || record.text == "999" || record.text == "1000") {
            logger.Log(2, "too early");
        }
        if (record.text == "Overflowed message queue.") { // the last record: the queue is empty
            logger.Log(2, "in time");
        }
    });
    logger.Log(2, "did not fit");
    sink.Release();
    ASSERT_TRUE(sink.WaitForText("in time"));
    auto expected = From0To1000();
    expected.emplace_back("Overflowed message queue.");
    expected.emplace_back("in time");
    EXPECT_EQ(expected, sink.Texts());
}

TEST_F(LibLogPerfOverflow, A_second_overflow_is_reported_again)
{
    Fill();
    logger.Log(2, "did not fit");
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(1002));

    sink.BlockNextWrite();
    logger.Log(2, "0");
    ASSERT_TRUE(sink.WaitUntilBlocked());
    for (int i = 1; i <= 1001; ++i) {
        logger.Log(2, "%d", i);
    }
    sink.Release();
    ASSERT_TRUE(sink.WaitForCount(2004));
    auto expected = From0To1000();
    expected.emplace_back("Overflowed message queue.");
    auto twice = expected;
    twice.insert(twice.end(), expected.begin(), expected.end());
    EXPECT_EQ(twice, sink.Texts());
}

} // namespace
} // namespace vqrx::test
