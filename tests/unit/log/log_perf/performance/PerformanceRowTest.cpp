#include "log_perf/performance/PerformanceRow.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::PerformanceFigures;
using log::log_perf::v2::PerformanceHeaderRow;
using log::log_perf::v2::PerformanceValueRow;

TEST(PerformanceRow, The_header_row_names_every_column_and_ends_with_a_comma)
{
    EXPECT_EQ("Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,"
              "KernelTime,UserTime,Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,"
              "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,",
              PerformanceHeaderRow({}));
}

TEST(PerformanceRow, The_header_row_has_a_column_for_each_pin)
{
    PerformanceFigures figures;
    figures.pins = {{"audio", 0}, {"video out", 0}};
    EXPECT_EQ("Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,"
              "KernelTime,UserTime,Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,"
              "buffer_full_audio,buffer_full_video out,"
              "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,",
              PerformanceHeaderRow(figures));
}

TEST(PerformanceRow, The_value_row_has_the_order_of_the_header_row)
{
    PerformanceFigures figures;
    figures.cpu = 1;
    figures.totalCpu = 2;
    figures.sample.workingSet = 3;
    figures.sample.pageFileUsage = 4;
    figures.numBufferFull = 5;
    figures.counters = {6, 7, 11, 14};
    figures.sample.kernelTime = 8;
    figures.sample.userTime = 9;
    figures.sample.time.time = 10;
    figures.sample.time.millitm = 123;
    figures.sample.totalPageFile = 112;
    figures.sample.availablePageFile = 100;
    figures.sample.handleCount = 13;
    figures.pins = {{"a", 15}, {"b", 16}};
    figures.lastDelta = 17;
    figures.periodsOverThreshold = 18;
    figures.needRestart = true;
    EXPECT_EQ("1,2,3,4,5,6,7,8,9,10123,11,12,13,14,15,16,17,18,1,", PerformanceValueRow(figures));
}

TEST(PerformanceRow, A_value_row_without_figures_holds_zeros)
{
    EXPECT_EQ("0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,", PerformanceValueRow({}));
}

TEST(PerformanceRow, Each_value_is_shown_in_its_full_width_and_with_its_sign)
{
    PerformanceFigures figures;
    figures.cpu = -1;
    figures.totalCpu = -9223372036854775807;
    figures.sample.workingSet = 18446744073709551615U;
    figures.numBufferFull = 4294967295U;
    figures.counters = {4294967295U, 4294967294U, 4294967293U, 4294967292U};
    figures.sample.kernelTime = 18446744073709551614U;
    figures.sample.time.time = -1;
    figures.pins = {{"a", -2147483647}};
    figures.lastDelta = 18446744073709551613U;
    EXPECT_EQ("-1,-9223372036854775807,18446744073709551615,0,4294967295,4294967295,4294967294,"
              "18446744073709551614,0,-1000,4294967293,0,0,4294967292,-2147483647,"
              "18446744073709551613,0,0,",
              PerformanceValueRow(figures));
}

} // namespace
} // namespace vqrx::test
