#include "log_perf/LibLogPerf.h"

#include "log_perf/Clock.h"
#include "log_perf/MessageText.h"
#include "log_perf/PerformanceSampler.h"
#include "log_perf/ReportDeadline.h"

#include <windows.h>

#include <cstdarg>
#include <cstdlib>
#include <ctime>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

} // namespace

LibLogPerf::LibLogPerf()
    : sinks_(std::make_shared<const SinkSet>())
    , previousSystem_(SampleSystemTimes())
    , queue_(*this)
{
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): seeds the C library for others; nothing secret
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

LibLogPerf::~LibLogPerf() = default;

void LibLogPerf::AddSink(ILogSink* sink)
{
    if (sink == nullptr) {
        return;
    }
    const CriticalSectionHold hold(sinkLock_);
    auto extended = std::make_shared<SinkSet>(*sinks_);
    extended->insert(sink);
    sinks_ = std::move(extended);
}

void LibLogPerf::Log(int level, const char* format, ...)
{
    const CriticalSectionHold hold(logLock_);
    std::va_list arguments; // NOLINT(cppcoreguidelines-init-variables): by va_start
    va_start(arguments, format);
    try {
        const Timestamp now = CurrentTimestamp();
        MessageBuffer buffer{};
        queue_.Append(level, now, FormatMessageInto(buffer, format, arguments));
    } catch (...) { // NOLINT(bugprone-empty-catch): out of memory loses the message, not the caller
    }
    va_end(arguments);
}

void LibLogPerf::Deliver(const LogRecord& record) noexcept
{
    std::shared_ptr<const SinkSet> sinks;
    {
        const CriticalSectionHold hold(sinkLock_);
        sinks = sinks_;
    }
    for (ILogSink* const sink : *sinks) {
        try {
            sink->Write(record.level, &record.timestamp, record.text.c_str());
        } catch (...) { // NOLINT(bugprone-empty-catch): the others still get the record
        }
    }
}

std::uint32_t LibLogPerf::TimeUntilReport() noexcept
{
    return v2::TimeUntilReport(lastReportTick_, reportPeriodMs_, GetTickCount());
}

void LibLogPerf::MakeReport() noexcept
{
    lastReportTick_ = GetTickCount();
    try {
        ReportPerformance();
    } catch (...) { // NOLINT(bugprone-empty-catch): the next period makes the next report
    }
}

void LibLogPerf::IncrementResync()
{
    const CriticalSectionHold hold(statisticsLock_);
    ++counters_.numResync;
}

void LibLogPerf::IncrementTsDiscontinuity()
{
    const CriticalSectionHold hold(statisticsLock_);
    ++counters_.numTsDiscontinuity;
}

void LibLogPerf::IncrementDecodedPictures()
{
    const CriticalSectionHold hold(statisticsLock_);
    ++counters_.numDecPictures;
}

void LibLogPerf::AddPoliticChoices(int count)
{
    const CriticalSectionHold hold(statisticsLock_);
    counters_.numPoliticChoices += static_cast<std::uint32_t>(count);
}

} // namespace vqrx::log::log_perf::v2
