// The system's tick starts again from 0 after 49.7 days.
#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "SimulatedTicks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using testing::ElementsAre;

TEST(LibLogPerfWrap, A_wrap_during_the_wait_for_a_report_causes_neither_a_delay_nor_a_burst)
{
    constexpr DWORD kBeforeTheWrap = 0xFFFFFFFF - 2499;
    const SimulatedTicks ticks(kBeforeTheWrap, SimulatedTicks::Mode::kRuns);
    const LibLogPerf logger;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (SimulatedTicks::Waits().size() < 10 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const auto waits = SimulatedTicks::Waits();
    ASSERT_LE(10U, waits.size());
    EXPECT_EQ(0U, waits[0].timeout); // the first report is due at once
    for (std::size_t index = 1; index < 10; ++index) {
        EXPECT_EQ(1000U, waits[index].timeout) << index;
        EXPECT_EQ(kBeforeTheWrap + static_cast<DWORD>(index - 1) * 1000, waits[index].tick);
    }
}

TEST(LibLogPerfWrap, A_wrap_during_the_window_of_a_pin_does_not_change_its_length)
{
    SimulatedTicks ticks(0xFFFFFFFF - 4999, SimulatedTicks::Mode::kStandsStill);
    CapturingSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        logger.RegisterPin("out"); // its first window begins
        logger.NotifyBufferFull("out");
        ticks.Advance(9999); // after the wrap
        logger.NotifyBufferFull("out");
        ticks.Advance(1);
        logger.NotifyBufferFull("out");
        ticks.Advance(9999);
        logger.NotifyBufferFull("out");
        ticks.Advance(1);
        logger.NotifyBufferFull("out");
    }
    EXPECT_THAT(sink.Texts(), ElementsAre("Pin output buffer full : out (x3)",
                                          "Pin output buffer full : out (x2)"));
}

} // namespace
} // namespace vqrx::test
