#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "ReportFixture.h"
#include "SimulatedTicks.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::MillisecondsOf;

TEST_F(LibLogPerfReport, The_first_report_comes_at_once_and_the_next_ones_every_1000_milliseconds)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(5));
    const auto waits = SimulatedTicks::Waits();
    ASSERT_LE(4U, waits.size());
    EXPECT_EQ(0U, waits[0].timeout);
    EXPECT_TRUE(waits[0].timedOut);
    for (std::size_t i = 1; i < waits.size(); ++i) {
        EXPECT_EQ(1000U, waits[i].timeout);
        EXPECT_EQ(5000U + (i - 1) * 1000U, waits[i].tick);
    }
}

TEST_F(LibLogPerfReport, The_first_row_is_the_header_and_every_later_row_holds_values)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(4));
    const auto texts = rows.Texts();
    EXPECT_EQ(kHeader, texts[0]);
    for (std::size_t i = 1; i < texts.size(); ++i) {
        EXPECT_EQ(17U, Fields(texts[i]).size()) << texts[i];
        EXPECT_EQ(',', texts[i].back());
    }
}

TEST_F(LibLogPerfReport, A_row_is_written_at_level_2_with_the_time_of_the_sample)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    const auto record = rows.Records()[1];
    EXPECT_EQ(2, record.level);
    EXPECT_EQ(std::to_string(MillisecondsOf(record.timestamp)), Fields(record.text)[9]);
}

TEST_F(LibLogPerfReport, A_row_shows_the_figures_of_the_system)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(3));
    const auto fields = Fields(rows.Texts()[2]);
    EXPECT_EQ("7", fields[0]);  // 3000 of 40000 units
    EXPECT_EQ("75", fields[1]); // a quarter idle
    EXPECT_EQ(std::stoull(fields[7]) * 2, std::stoull(fields[8]));
    EXPECT_EQ("600", fields[11]);
    EXPECT_EQ("100", fields[12]);
    const auto before = Fields(rows.Texts()[1]);
    EXPECT_EQ(std::stoull(before[7]) + 1000, std::stoull(fields[7]));
}

TEST_F(LibLogPerfReport, A_row_shows_the_counters_that_other_code_raised)
{
    for (int i = 0; i < 3; ++i) {
        logger.IncrementResync();
    }
    for (int i = 0; i < 4; ++i) {
        logger.IncrementTsDiscontinuity();
    }
    for (int i = 0; i < 5; ++i) {
        logger.IncrementDecodedPictures();
    }
    logger.AddPoliticChoices(10);
    logger.AddPoliticChoices(-4);
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    const auto fields = Fields(rows.Texts()[1]);
    EXPECT_EQ("3", fields[5]);
    EXPECT_EQ("4", fields[6]);
    EXPECT_EQ("5", fields[10]);
    EXPECT_EQ("6", fields[13]);
}

TEST_F(LibLogPerfReport, A_row_lists_the_pins_in_name_order_with_their_counts)
{
    logger.RegisterPin("video");
    logger.RegisterPin("audio");
    logger.NotifyBufferFull("video");
    logger.NotifyBufferFull("video");
    logger.NotifyBufferFull("audio");
    logger.NotifyBufferFull("unknown");
    AwaitEndOfReport();
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    const auto names = Fields(rows.Texts()[0]);
    const auto fields = Fields(rows.Texts()[1]);
    ASSERT_EQ(19U, names.size());
    ASSERT_EQ(19U, fields.size());
    EXPECT_EQ("buffer_full_audio", names[14]);
    EXPECT_EQ("buffer_full_video", names[15]);
    EXPECT_EQ("1", fields[14]);
    EXPECT_EQ("2", fields[15]);
    EXPECT_EQ("3", fields[4]); // the unregistered pin is not counted
}

TEST_F(LibLogPerfReport, A_row_shows_the_buffer_full_periods)
{
    logger.SetBufferFullSettings({1000, 1, 2, 0});
    logger.NotifyBufferFull("a");
    logger.NotifyBufferFull("b");
    logger.CheckBufferFullPeriod();
    logger.NotifyBufferFull("a");
    logger.CheckBufferFullPeriod();
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    const auto fields = Fields(rows.Texts()[1]);
    EXPECT_EQ("1", fields[14]);
    EXPECT_EQ("2", fields[15]);
    EXPECT_EQ("1", fields[16]);
}

TEST(LibLogPerfReportOfThisMachine, The_next_report_comes_a_second_later_and_has_greater_times)
{
    CapturingSink rows;
    LibLogPerf logger;
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(3));
    const auto first = Fields(rows.Texts()[1]);
    const auto second = Fields(rows.Texts()[2]);
    EXPECT_LT(0U, std::stoull(second[2])); // the working set
    EXPECT_LT(0U, std::stoull(second[11]));
    EXPECT_LE(std::stoull(first[7]) + std::stoull(first[8]),
              std::stoull(second[7]) + std::stoull(second[8]));
    // The ticks that time the reports, and the date, go on in steps of up to 16 ms.
    EXPECT_LE(std::stoull(first[9]) + 1000 - 3 * 16, std::stoull(second[9]));
}

} // namespace
} // namespace vqrx::test
