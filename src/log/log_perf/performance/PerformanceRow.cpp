#include "log_perf/performance/PerformanceRow.h"

namespace vqrx::log::log_perf::v2 {
namespace {

// Uses no stream: a locale that groups digits would put further commas into the row.
template <typename... Numbers>
void AppendFields(std::string& row, Numbers... numbers)
{
    (row.append(std::to_string(numbers)).append(","), ...);
}

} // namespace

std::string PerformanceHeaderRow(const PerformanceFigures& figures)
{
    std::string row = "Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,"
                      "NumTsDiscontinuity,KernelTime,UserTime,Date,NumDecPictures,VirtualSize,"
                      "HandleCount,NumPoliticChoices,";
    for (const auto& [name, count] : figures.pins) {
        row.append("buffer_full_").append(name).append(",");
    }
    return row + "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,";
}

std::string PerformanceValueRow(const PerformanceFigures& figures)
{
    const PerformanceSample& sample = figures.sample;
    const PerformanceCounters& counters = figures.counters;
    std::string row;
    AppendFields(row, figures.cpu, figures.totalCpu, sample.workingSet, sample.pageFileUsage,
                 figures.numBufferFull, counters.numResync, counters.numTsDiscontinuity,
                 sample.kernelTime, sample.userTime, MillisecondsOf(sample.time),
                 counters.numDecPictures, sample.Committed(), sample.handleCount,
                 counters.numPoliticChoices);
    for (const auto& [name, count] : figures.pins) {
        AppendFields(row, count);
    }
    AppendFields(row, figures.lastDelta, figures.periodsOverThreshold, figures.needRestart ? 1 : 0);
    return row;
}

} // namespace vqrx::log::log_perf::v2
