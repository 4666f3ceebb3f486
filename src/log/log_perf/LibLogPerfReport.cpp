// The measuring half of LibLogPerf: the performance report and the buffer-full notices.
#include "log_perf/LibLogPerf.h"

#include "log_perf/PerformanceArithmetic.h"
#include "log_perf/PerformanceSampler.h"

#include <windows.h>

#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

constexpr std::uint32_t kPinWindowMs = 10000;

std::int32_t ToFigure(std::int64_t value) noexcept
{
    return static_cast<std::int32_t>(value);
}

} // namespace

void LibLogPerf::ReportPerformance()
{
    const PerformanceSample sample = SamplePerformance();
    const SystemLoad load = LoadBetween(previousSystem_, sample.system);
    lastBusyDelta_ = load.busyDelta;
    lastTotalCpu_ = load.totalCpu;
    previousSystem_ = sample.system;
    if (lastBusyDelta_ == 0) {
        return;
    }
    const PerformanceFigures figures =
        Collect(sample, ProcessCpu(previousKernelTime_ + previousUserTime_,
                                   sample.kernelTime + sample.userTime, lastBusyDelta_));
    std::uint32_t previousChoices = 0;
    {
        const CriticalSectionHold hold(statisticsLock_);
        previousChoices = previousPoliticChoices_;
    }
    Observe(figures,
            PoliticRate(previousChoices, figures.counters.numPoliticChoices, reportPeriodMs_));
    Emit(figures);

    previousKernelTime_ = sample.kernelTime;
    previousUserTime_ = sample.userTime;
    const CriticalSectionHold hold(statisticsLock_);
    previousPoliticChoices_ = figures.counters.numPoliticChoices;
}

PerformanceFigures LibLogPerf::Collect(const PerformanceSample& sample, std::int64_t cpu)
{
    PerformanceFigures figures;
    figures.cpu = cpu;
    figures.totalCpu = lastTotalCpu_;
    figures.sample = sample;
    {
        const CriticalSectionHold hold(bufferFullLock_);
        figures.periodsOverThreshold = bufferFull_.PeriodsOverThreshold();
        figures.lastDelta = bufferFull_.LastDelta();
        figures.needRestart = bufferFull_.NeedRestart();
    }
    const CriticalSectionHold hold(statisticsLock_);
    figures.counters = counters_;
    figures.pins.reserve(pins_.size());
    for (const auto& [name, pin] : pins_) {
        figures.numBufferFull += *pin.count;
        figures.pins.emplace_back(name, static_cast<std::int32_t>(*pin.count));
    }
    return figures;
}

void LibLogPerf::Observe(const PerformanceFigures& figures, std::int32_t rate)
{
    const PerformanceSample& sample = figures.sample;
    const CriticalSectionHold hold(sinkLock_);
    if (performanceObserver_ == nullptr) {
        return;
    }
    const auto total = static_cast<std::int64_t>(sample.totalPageFile);
    try {
        performanceObserver_->OnPerformance(
            ToFigure(figures.cpu),
            total == 0 ? 0
                       : ToFigure(PercentOf(static_cast<std::int64_t>(sample.Committed()), total)),
            ToFigure(static_cast<std::int64_t>(sample.workingSet >> 20)), rate);
    } catch (...) { // NOLINT(bugprone-empty-catch): an observer does not cost us the report
    }
}

void LibLogPerf::Emit(const PerformanceFigures& figures)
{
    ILogSink* sink = nullptr;
    bool made = false;
    std::uint32_t choice = 0;
    {
        const CriticalSectionHold hold(sinkLock_);
        sink = performanceSink_;
        made = reportMade_;
        choice = performanceSinkChoice_;
    }
    if (sink == nullptr) {
        return;
    }
    const std::string row = made ? PerformanceValueRow(figures) : PerformanceHeaderRow(figures);
    try {
        sink->Write(2, &figures.sample.time, row.c_str());
    } catch (...) { // the row is lost, and the header is tried again
        return;
    }
    const CriticalSectionHold hold(sinkLock_);
    if (choice == performanceSinkChoice_) { // what was set meanwhile has not seen the header yet
        reportMade_ = true;
    }
}

void LibLogPerf::SetPerformanceSink(ILogSink* sink)
{
    const CriticalSectionHold hold(sinkLock_);
    performanceSink_ = sink;
    ++performanceSinkChoice_;
    reportMade_ = false;
}

void LibLogPerf::SetPerformanceObserver(IPerformanceObserver* observer)
{
    const CriticalSectionHold hold(sinkLock_);
    performanceObserver_ = observer;
}

void LibLogPerf::RegisterPin(const char* name)
{
    Pin pin{std::make_shared<std::uint32_t>(0), PinRateLimiter(kPinWindowMs, GetTickCount())};
    const CriticalSectionHold hold(statisticsLock_);
    pins_.insert_or_assign(name, std::move(pin));
}

void LibLogPerf::NotifyBufferFull(const char* name)
{
    {
        const CriticalSectionHold hold(bufferFullLock_);
        bufferFull_.Notice();
    }
    const CriticalSectionHold hold(statisticsLock_);
    const auto found = pins_.find(name);
    std::uint32_t represented = 1;
    if (found != pins_.end()) {
        Pin& pin = found->second;
        represented = pin.limiter.Notice(GetTickCount());
        ++*pin.count;
    }
    if (represented == 1) {
        Log(noticeLevel_, "Pin output buffer full : %s", name);
    } else if (represented > 1) {
        Log(noticeLevel_, "Pin output buffer full : %s (x%d)", name, static_cast<int>(represented));
    }
}

void LibLogPerf::SetBufferFullSettings(const BufferFullSettings& settings)
{
    const CriticalSectionHold hold(bufferFullLock_);
    bufferFull_.Configure(settings);
}

void LibLogPerf::CheckBufferFullPeriod()
{
    const CriticalSectionHold hold(bufferFullLock_);
    bufferFull_.Check();
}

} // namespace vqrx::log::log_perf::v2
