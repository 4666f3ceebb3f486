#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "SimulatedTicks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::BufferFullSettings;
using log::log_perf::v2::IPerformanceObserver;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::MillisecondsOf;

constexpr const char* kHeader =
    "Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,KernelTime,"
    "UserTime,Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,"
    "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,";

std::vector<std::string> Fields(const std::string& row)
{
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) {
        fields.push_back(field);
    }
    return fields;
}

/// Keeps the rates, as a sink keeps texts.
class CapturingObserver : public IPerformanceObserver {
public:
    void OnPerformance(std::int32_t cpu, std::int32_t committedPercent, std::int32_t workingSetMiB,
                       std::int32_t choicesPerSecond) override
    {
        std::ostringstream text;
        text << cpu << ' ' << committedPercent << ' ' << workingSetMiB << ' ' << choicesPerSecond;
        const log::log_perf::v2::Timestamp now{};
        calls.Write(0, &now, text.str().c_str());
    }
    CapturingSink calls;
};

// Numbers that the stand-ins for the system show.
std::atomic<std::uint64_t> systemIdle{0};
std::atomic<std::uint64_t> systemBusyStep{0};
std::atomic<std::uint64_t> systemBusy{0};
std::atomic<int> systemAsked{0};

FILETIME TimeOf(std::uint64_t value)
{
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

/// Each call finds the machine systemBusyStep further, half of it in the kernel, a quarter idle.
BOOL WINAPI SystemTimesInSteps(FILETIME* idle, FILETIME* kernel, FILETIME* user)
{
    ++systemAsked;
    systemBusy += systemBusyStep;
    systemIdle += systemBusyStep / 4;
    *idle = TimeOf(systemIdle);
    *kernel = TimeOf(systemBusy / 2);
    *user = TimeOf(systemBusy / 2);
    return TRUE;
}

std::uint64_t processTime = 0; // the worker's alone

BOOL WINAPI ProcessTimesInSteps(HANDLE, FILETIME*, FILETIME*, FILETIME* kernel, FILETIME* user)
{
    processTime += 1000;
    *kernel = TimeOf(processTime);
    *user = TimeOf(2 * processTime);
    return TRUE;
}

BOOL WINAPI HundredHandles(HANDLE, DWORD* count)
{
    *count = 100;
    return TRUE;
}

BOOL WINAPI SixtyPercentCommitted(MEMORYSTATUSEX* status)
{
    if (status->dwLength != 64) {
        return FALSE;
    }
    status->ullTotalPageFile = 1000;
    status->ullAvailPageFile = 400;
    return TRUE;
}

/// A machine whose figures are known, with reports that come without a second's wait.
class LibLogPerfReport : public testing::Test {
protected:
    // Set back before the logger's worker asks for the first time.
    struct Figures {
        Figures()
        {
            systemBusyStep = 40000;
            systemAsked = 0;
            processTime = 0;
        }
    };

    Figures figures;
    SimulatedTicks ticks{5000, SimulatedTicks::Mode::kRuns};
    ImportPatch systemTimes{"GetSystemTimes", &SystemTimesInSteps};
    ImportPatch processTimes{"GetProcessTimes", &ProcessTimesInSteps};
    ImportPatch handleCount{"GetProcessHandleCount", &HundredHandles};
    ImportPatch memoryStatus{"GlobalMemoryStatusEx", &SixtyPercentCommitted};
    CapturingSink rows; // these outlive the logger
    CapturingSink others;
    CapturingObserver observer;
    LibLogPerf logger;
};

TEST_F(LibLogPerfReport, comes_at_once_and_then_every_1000_milliseconds)
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

TEST_F(LibLogPerfReport, sends_the_header_first_and_values_ever_after)
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

TEST_F(LibLogPerfReport, writes_rows_at_level_2_with_the_time_of_the_sample)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    const auto record = rows.Records()[1];
    EXPECT_EQ(2, record.level);
    EXPECT_EQ(std::to_string(MillisecondsOf(record.timestamp)), Fields(record.text)[9]);
}

TEST_F(LibLogPerfReport, shows_what_the_system_says)
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

TEST_F(LibLogPerfReport, shows_the_counters_that_other_code_raised)
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

TEST_F(LibLogPerfReport, lists_the_pins_in_name_order_with_their_counts)
{
    logger.RegisterPin("video");
    logger.RegisterPin("audio");
    logger.NotifyBufferFull("video");
    logger.NotifyBufferFull("video");
    logger.NotifyBufferFull("audio");
    logger.NotifyBufferFull("unknown");
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
    EXPECT_EQ("3", fields[4]); // the unregistered pin counts toward none
}

TEST_F(LibLogPerfReport, shows_the_buffer_full_periods)
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

TEST_F(LibLogPerfReport, without_a_sink_writes_nothing_and_the_next_sink_gets_the_header_first)
{
    logger.AddSink(&others);
    logger.SetPerformanceObserver(&observer);
    ASSERT_TRUE(observer.calls.WaitForCount(3));
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
    EXPECT_NE(kHeader, rows.Texts()[1]);
    EXPECT_TRUE(others.Texts().empty()); // a message sink is no performance sink
}

TEST_F(LibLogPerfReport, sends_the_header_first_to_every_newly_set_sink)
{
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    logger.SetPerformanceSink(&others);
    ASSERT_TRUE(others.WaitForCount(2));
    EXPECT_EQ(kHeader, others.Texts()[0]);
    EXPECT_NE(kHeader, others.Texts()[1]);
}

TEST_F(LibLogPerfReport, sends_the_header_to_a_sink_that_is_set_anew_while_it_writes)
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

TEST_F(LibLogPerfReport, sends_the_header_again_when_the_sink_failed_to_take_it)
{
    rows.ThrowAtNextWrite();
    logger.SetPerformanceSink(&rows);
    ASSERT_TRUE(rows.WaitForCount(2));
    EXPECT_EQ(kHeader, rows.Texts()[0]);
    EXPECT_NE(kHeader, rows.Texts()[1]);
}

TEST_F(LibLogPerfReport, is_not_written_while_the_busy_time_of_the_machine_stands_still)
{
    systemBusyStep = 0;
    systemAsked = 0;
    // One report may be under way with a sample of before.
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

TEST_F(LibLogPerfReport, tells_the_observer_the_key_figures)
{
    logger.SetPerformanceObserver(&observer);
    ASSERT_TRUE(observer.calls.WaitForCount(1));
    logger.AddPoliticChoices(250);
    ASSERT_TRUE(observer.calls.WaitForCount(4));
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
    EXPECT_EQ(250, rates); // told once, in the period in which they were made
}

TEST_F(LibLogPerfReport, outlives_an_observer_that_throws)
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

TEST(LibLogPerfReportOfThisMachine, comes_a_second_after_the_one_before)
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
    EXPECT_LT(std::stoull(first[9]), std::stoull(second[9]));
}

} // namespace
} // namespace vqrx::test
