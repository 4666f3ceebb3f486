#include "log_perf/LibLogPerf.h"

#include "LogLevel.h"
#include "log_perf/queue/MessageText.h"
#include "log_perf/time/Clock.h"

#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <utility>

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

using i_logger::v0::kLevelWarning;
using system::sync_ptr::v1::CriticalSectionHold;

constexpr std::uint32_t kReportPeriodMs = 1000;
constexpr std::uint32_t kPinWindowMs = 10000; // silence after a logged notice of a full buffer

} // namespace

LibLogPerf::LibLogPerf()
    : report_(receivers_, statistics_, bufferFull_, kReportPeriodMs)
    , worker_(queue_, receivers_, kReportPeriodMs, [this] { ReportPerformance(); })
{
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): for users of the C library; nothing secret
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

LibLogPerf::~LibLogPerf() = default;

void LibLogPerf::AddSink(ILogSink* sink)
{
    if (sink == nullptr) {
        return;
    }
    const auto receivers = receivers_.Lock();
    auto extended = std::make_shared<SinkSet>(*receivers->sinks);
    extended->try_emplace(sink, dynamic_cast<ISinkReports*>(sink));
    receivers->sinks = std::move(extended);
}

void LibLogPerf::Log(int level, const char* format, ...)
{
    const CriticalSectionHold hold(logLock_);
    std::va_list arguments; // NOLINT(cppcoreguidelines-init-variables): by va_start
    va_start(arguments, format);
    try {
        const Timestamp now = CurrentTimestamp();
        MessageBuffer buffer{};
        if (queue_.Append(level, now, FormatMessageInto(buffer, format, arguments))) {
            worker_.RecordAppended();
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): if memory runs out, the message is lost
    }
    va_end(arguments);
}

void LibLogPerf::ReportPerformance()
{
    report_.Make();
}

void LibLogPerf::IncrementResync()
{
    ++statistics_.Lock()->counters.numResync;
}

void LibLogPerf::IncrementTsDiscontinuity()
{
    ++statistics_.Lock()->counters.numTsDiscontinuity;
}

void LibLogPerf::IncrementDecodedPictures()
{
    ++statistics_.Lock()->counters.numDecPictures;
}

void LibLogPerf::AddPoliticChoices(int count)
{
    statistics_.Lock()->counters.numPoliticChoices += static_cast<std::uint32_t>(count);
}

void LibLogPerf::RegisterPin(const char* name)
{
    const auto statistics = statistics_.Lock(); // first: a wait for it must not shorten the silence
    Pin pin{std::make_shared<std::uint32_t>(0), PinRateLimiter(kPinWindowMs, GetTickCount())};
    statistics->pins.insert_or_assign(name, std::move(pin));
}

void LibLogPerf::NotifyBufferFull(const char* name)
{
    bufferFull_.Lock()->Notice();
    const auto statistics = statistics_.Lock(); // held until the line is logged
    const auto found = statistics->pins.find(name);
    std::uint32_t represented = 1;
    if (found != statistics->pins.end()) {
        Pin& pin = found->second;
        represented = pin.limiter.Notice(GetTickCount());
        ++*pin.count;
    }
    if (represented == 1) {
        Log(kLevelWarning, "Pin output buffer full : %s", name);
    } else if (represented > 1) {
        Log(kLevelWarning, "Pin output buffer full : %s (x%d)", name,
            static_cast<int>(represented));
    }
}

void LibLogPerf::SetPerformanceSink(ILogSink* sink)
{
    const auto receivers = receivers_.Lock();
    receivers->performanceSink = sink;
    ++receivers->performanceSinkChanges;
    receivers->headerWritten = false;
}

void LibLogPerf::SetPerformanceObserver(IPerformanceObserver* observer)
{
    receivers_.Lock()->observer = observer;
}

void LibLogPerf::SetBufferFullSettings(const BufferFullSettings& settings)
{
    bufferFull_.Lock()->Configure(settings);
}

void LibLogPerf::CheckBufferFullPeriod()
{
    bufferFull_.Lock()->Check();
}

} // namespace vqrx::log::log_perf::v2
