#include "log_perf/performance/PerformanceReport.h"

#include "LogLevel.h"
#include "log_perf/performance/PerformanceArithmetic.h"
#include "log_perf/performance/PerformanceSampler.h"

#include <string>

namespace vqrx::log::log_perf::v2 {
namespace {

std::int32_t ToFigure(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(value);
}

std::int64_t CommittedPercent(const PerformanceSample& sample) noexcept
{
    const auto total = static_cast<std::int64_t>(sample.totalPageFile);
    return total == 0 ? 0 : PercentOf(static_cast<std::int64_t>(sample.Committed()), total);
}

} // namespace

PerformanceReport::PerformanceReport(GuardedReceivers& receivers, GuardedStatistics& statistics,
                                     GuardedBufferFullPeriods& bufferFull,
                                     std::uint32_t periodMs) noexcept
    : receivers_(receivers)
    , statistics_(statistics)
    , bufferFull_(bufferFull)
    , periodMs_(periodMs)
    , previousSystem_(SampleSystemTimes())
{
}

void PerformanceReport::Make()
{
    PerformanceFigures figures;
    figures.sample = SamplePerformance();
    const PerformanceSample& sample = figures.sample;
    const SystemLoad load = LoadBetween(previousSystem_, sample.system);
    previousSystem_ = sample.system;
    if (load.totalDelta == 0) {
        return;
    }
    figures.totalCpu = load.totalCpu;
    figures.cpu = ProcessCpu(previousKernelTime_ + previousUserTime_,
                             sample.kernelTime + sample.userTime, load.totalDelta);
    AddBufferFull(figures);
    const std::uint32_t previousChoices = AddStatistics(figures);
    const std::uint32_t choices = figures.counters.numPoliticChoices;
    Observe(figures, PoliticRate(previousChoices, choices, periodMs_));
    Emit(figures);

    previousKernelTime_ = sample.kernelTime;
    previousUserTime_ = sample.userTime;
    statistics_.Lock()->previousPoliticChoices = choices;
}

void PerformanceReport::AddBufferFull(PerformanceFigures& figures)
{
    const auto periods = bufferFull_.Lock();
    figures.periodsOverThreshold = periods->PeriodsOverThreshold();
    figures.lastDelta = periods->LastDelta();
    figures.needRestart = periods->NeedRestart();
}

std::uint32_t PerformanceReport::AddStatistics(PerformanceFigures& figures)
{
    const auto statistics = statistics_.Lock();
    figures.counters = statistics->counters;
    figures.pins.reserve(statistics->pins.size());
    for (const auto& [name, pin] : statistics->pins) {
        figures.numBufferFull += *pin.count;
        figures.pins.emplace_back(name, static_cast<std::int32_t>(*pin.count));
    }
    return statistics->previousPoliticChoices;
}

void PerformanceReport::Observe(const PerformanceFigures& figures, std::int32_t rate)
{
    const auto receivers = receivers_.Lock();
    if (receivers->observer == nullptr) {
        return;
    }
    const PerformanceSample& sample = figures.sample;
    try {
        receivers->observer->OnPerformance(
            ToFigure(figures.cpu), ToFigure(CommittedPercent(sample)),
            ToFigure(static_cast<std::int64_t>(sample.workingSet >> 20)), rate);
    } catch (...) { // NOLINT(bugprone-empty-catch): the row is written all the same
    }
}

void PerformanceReport::Emit(const PerformanceFigures& figures)
{
    ILogSink* sink = nullptr;
    bool headerWritten = false;
    std::uint32_t changes = 0;
    {
        const auto receivers = receivers_.Lock();
        sink = receivers->performanceSink;
        headerWritten = receivers->headerWritten;
        changes = receivers->performanceSinkChanges;
    }
    if (sink == nullptr) {
        return;
    }
    const std::string row =
        headerWritten ? PerformanceValueRow(figures) : PerformanceHeaderRow(figures);
    try {
        sink->Write(i_logger::v0::kLevelInformation, &figures.sample.time, row.c_str());
    } catch (...) { // the row is lost; a lost header is tried again by the next report
        return;
    }
    const auto receivers = receivers_.Lock();
    if (changes == receivers->performanceSinkChanges) { // a sink set meanwhile has no header yet
        receivers->headerWritten = true;
    }
}

} // namespace vqrx::log::log_perf::v2
