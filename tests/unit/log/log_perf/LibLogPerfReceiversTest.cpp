// The receivers of the report: performance sinks and the observer.
#include "log_perf/LibLogPerf.h"

#include "ReportFixture.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <memory>
#include <sstream>
#include <string>

namespace vqrx::test {
namespace {

TEST_F(LibLogPerfReport, Without_a_sink_nothing_is_written_and_the_next_sink_gets_the_header_first)
{
    logger.AddSink(&others);
    logger.SetPerformanceObserver(&observer);
    ASSERT_TRUE(observer.calls.WaitForCount(3));
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
    EXPECT_NE(kHeader, rows.Texts()[1]);
    EXPECT_TRUE(others.Texts().empty()); // rows go to the performance sink only
}

TEST_F(LibLogPerfReport, Every_newly_set_sink_gets_the_header_first)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    logger.SetPerformanceSink(&others);
    ASSERT_TRUE(others.WaitForCount(2));
    EXPECT_EQ(kHeader, others.Texts()[0]);
    EXPECT_NE(kHeader, others.Texts()[1]);
}

TEST_F(LibLogPerfReport, A_sink_that_is_set_again_while_it_writes_gets_the_header_again)
{
    rows.SetHook([this, done = std::make_shared<bool>(false)](const CapturingSink::Record&) {
        if (!*done) {
            *done = true;
            logger.SetPerformanceSink(&rows);
        }
    });
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(3));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
    EXPECT_EQ(kHeader, rows.Texts()[1]);
    EXPECT_NE(kHeader, rows.Texts()[2]);
}

TEST_F(LibLogPerfReport, A_sink_that_failed_to_write_the_header_gets_it_again)
{
    rows.ThrowAtNextWrite();
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
    EXPECT_NE(kHeader, rows.Texts()[1]);
}

TEST_F(LibLogPerfReport, No_row_is_written_while_the_busy_time_of_the_machine_stands_still)
{
    systemBusyStep = 0;
    systemAsked = 0;
    // A report with an older sample may still be running.
    while (systemAsked < 3) {
        SwitchToThread();
    }
    logger.SetPerformanceObserver(&observer);
    logger.SetPerformanceSink(&rows);
    systemAsked = 0;
    while (systemAsked < 5) {
        SwitchToThread();
    }
    EXPECT_TRUE(rows.Texts().empty());
    EXPECT_TRUE(observer.calls.Texts().empty());

    systemBusyStep = 40000;
    ASSERT_TRUE(rows.WaitForCount(2));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
}

TEST_F(LibLogPerfReport, The_observer_gets_the_key_figures)
{
    logger.SetPerformanceObserver(&observer);
    ASSERT_TRUE(observer.calls.WaitForCount(1));
    logger.AddPoliticChoices(250);
    // A report may be under way that has read the number already; the next one reports it.
    ASSERT_TRUE(observer.calls.WaitForCount(observer.calls.Texts().size() + 2));
    int rates = 0;
    for (const std::string& call : observer.calls.Texts()) {
        std::istringstream stream(call);
        int cpu = -1;
        int committed = -1;
        int workingSet = -1;
        int rate = -1;
        stream >> cpu >> committed >> workingSet >> rate;
        EXPECT_EQ(7, cpu);
        EXPECT_EQ(60, committed);
        EXPECT_LT(0, workingSet);
        rates += rate;
    }
    EXPECT_EQ(250, rates); // reported once, in the period in which they were added
}

TEST_F(LibLogPerfReport, An_observer_that_throws_stops_neither_rows_nor_messages)
{
    observer.calls.ThrowAtNextWrite();
    logger.SetPerformanceObserver(&observer);
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(observer.calls.WaitForCount(1));
    ASSERT_TRUE(rows.WaitForCount(2));
    logger.SetPerformanceObserver(nullptr);
    logger.SetPerformanceSink(nullptr);
    logger.AddSink(&others);
    logger.Log(2, "alive");
    EXPECT_TRUE(others.WaitForText("alive"));
}

} // namespace
} // namespace vqrx::test
