#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "LockDepth.h"
#include "SimulatedTicks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using testing::ElementsAre;
using testing::IsEmpty;

class LibLogPerfBufferFull : public testing::Test {
protected:
    LibLogPerfBufferFull() { logger.AddSink(&sink); }

    /// All lines that were logged up to now.
    std::vector<std::string> Lines()
    {
        const std::string mark = "mark " + std::to_string(++marks);
        logger.Log(3, "%s", mark.c_str());
        EXPECT_TRUE(sink.WaitForText(mark));
        std::vector<std::string> lines;
        for (const std::string& text : sink.Texts()) {
            if (text.rfind("mark ", 0) != 0) {
                lines.push_back(text);
            }
        }
        return lines;
    }

    SimulatedTicks ticks{100000, SimulatedTicks::Mode::kStandsStill};
    CapturingSink sink;
    LibLogPerf logger;
    int marks = 0;
};

TEST_F(LibLogPerfBufferFull, Every_notice_of_an_unregistered_pin_is_logged_as_a_warning)
{
    logger.NotifyBufferFull("out");
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(),
                ElementsAre("Pin output buffer full : out", "Pin output buffer full : out"));
    EXPECT_EQ(1, sink.Records()[0].level);
}

TEST_F(LibLogPerfBufferFull, Five_notices_within_ten_seconds_log_one_line)
{
    logger.RegisterPin("out");
    ticks.Advance(10000);
    for (int i = 0; i < 5; ++i) {
        logger.NotifyBufferFull("out");
        ticks.Advance(1000);
    }
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : out"));
    ticks.Advance(4999);
    logger.NotifyBufferFull("out"); // 9999 ms after the line: still suppressed
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : out"));
    ticks.Advance(1);
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(),
                ElementsAre("Pin output buffer full : out", "Pin output buffer full : out (x6)"));
    EXPECT_EQ(1, sink.Records()[0].level);
}

TEST_F(LibLogPerfBufferFull, The_line_after_four_suppressed_notices_shows_the_pin_and_5)
{
    logger.RegisterPin("video out");
    ticks.Advance(10000);
    for (int i = 0; i < 5; ++i) {
        logger.NotifyBufferFull("video out");
    }
    ticks.Advance(10000);
    logger.NotifyBufferFull("video out");
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : video out",
                                     "Pin output buffer full : video out (x5)"));
}

TEST_F(LibLogPerfBufferFull, For_ten_seconds_after_the_registration_of_a_pin_nothing_is_logged)
{
    logger.RegisterPin("out");
    logger.NotifyBufferFull("out");
    ticks.Advance(9999);
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(), IsEmpty());
    ticks.Advance(1);
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : out (x3)"));
}

TEST_F(LibLogPerfBufferFull, Notices_of_one_pin_do_not_silence_another)
{
    logger.RegisterPin("a");
    logger.RegisterPin("b");
    ticks.Advance(10000);
    logger.NotifyBufferFull("a");
    logger.NotifyBufferFull("b");
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : a", "Pin output buffer full : b"));
}

TEST_F(LibLogPerfBufferFull, A_pin_that_is_registered_again_starts_from_zero)
{
    logger.RegisterPin("out");
    logger.NotifyBufferFull("out");
    logger.NotifyBufferFull("out");
    ticks.Advance(9000);
    logger.RegisterPin("out");
    ticks.Advance(9000);
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(), IsEmpty());
    ticks.Advance(1000);
    logger.NotifyBufferFull("out");
    EXPECT_THAT(Lines(), ElementsAre("Pin output buffer full : out (x2)"));
}

int locksAtTick = -1;

DWORD WINAPI TickThatNotesLocks()
{
    if (LockDepth::Here() >= 0) { // not on the worker thread
        locksAtTick = LockDepth::Here();
    }
    return 100000;
}

TEST(LibLogPerfPins, The_registration_of_a_pin_reads_the_tick_inside_the_lock)
{
    const LockDepth locks;
    const ImportPatch tick("GetTickCount", &TickThatNotesLocks);
    LibLogPerf logger;
    locksAtTick = -1;
    logger.RegisterPin("out");
    EXPECT_EQ(1, locksAtTick);
    EXPECT_EQ(0, LockDepth::Here());
}

TEST_F(LibLogPerfBufferFull, Notices_may_come_while_another_thread_logs_and_a_sink_counts)
{
    // If Log took the statistics lock, the threads would wait for each other for ever.
    sink.SetHook([this](const CapturingSink::Record&) { logger.IncrementResync(); });
    std::thread other([this] {
        for (int i = 0; i < 200; ++i) {
            logger.Log(3, "other");
            logger.IncrementDecodedPictures();
        }
    });
    for (int i = 0; i < 200; ++i) {
        logger.NotifyBufferFull("out");
    }
    other.join();
    EXPECT_TRUE(sink.WaitForCount(400));
}

} // namespace
} // namespace vqrx::test
