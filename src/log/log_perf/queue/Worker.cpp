#include "log_perf/queue/Worker.h"

#include "LogLevel.h"
#include "log_perf/sink/SinkNotice.h"
#include "log_perf/time/Clock.h"
#include "thread/Thread.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <windows.h>

#include <process.h>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr DWORD kPauseWithoutSignalMs = 10;

// Gives the other sinks a line about the trouble of one sink.
void Announce(const SinkSet& sinks, const ILogSink* troubled, const std::string& line) noexcept
{
    const Timestamp now = CurrentTimestamp();
    for (const auto& [sink, reports] : sinks) {
        if (sink == troubled) {
            continue;
        }
        try {
            sink->Write(i_logger::v0::kLevelError, &now, line.c_str());
        } catch (...) { // NOLINT(bugprone-empty-catch): the other sinks still get the line
        }
    }
}

void AnnounceReport(const SinkSet& sinks, const SinkSet::value_type& reporter) noexcept
{
    const auto& [sink, reports] = reporter;
    try {
        if (const std::optional<std::string> report = reports->TakeReport()) {
            Announce(sinks, sink, *report);
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): the report is still due at the next record
    }
}

} // namespace

Worker::Worker(MessageQueue& queue, GuardedReceivers& receivers, std::uint32_t periodMs,
               std::function<void()> report)
    : queue_(queue)
    , receivers_(receivers)
    , clock_(periodMs)
    , report_(std::move(report))
{
    Start();
    if (!thread_) {
        std::cerr << "The log has no thread. It writes its messages when it gets one, or at its end"
                  << std::endl;
    }
}

Worker::~Worker()
{
    if (!thread_) {
        DeliverAll();
        return;
    }
    stopping_ = true;
    signal_.Stop();
    system::thread::v1::WaitForEnd(thread_.Get());
}

void Worker::Start() noexcept
{
    const auto created = _beginthreadex(nullptr, 0, ThreadEntry, this, 0, nullptr);
    thread_.Reset(reinterpret_cast<HANDLE>(created)); // NOLINT(performance-no-int-to-ptr)
}

void Worker::RecordAppended() noexcept
{
    if (!thread_) {
        Start();
    }
    signal_.Post();
}

void Worker::Deliver(const LogRecord& record, const SinkSet& sinks,
                     const SinkSet::value_type& sink) noexcept
{
    try {
        sink.first->Write(record.level, &record.timestamp, record.text.c_str());
    } catch (const SinkNotice& notice) {
        Announce(sinks, sink.first, notice.Notice());
    } catch (...) { // NOLINT(bugprone-empty-catch): the other sinks still get the record
    }
    if (sink.second != nullptr) {
        AnnounceReport(sinks, sink);
    }
}

void Worker::DeliverOne() noexcept
{
    const LogRecord* const record = queue_.Take();
    if (record == nullptr) {
        return;
    }
    const std::shared_ptr<const SinkSet> sinks = receivers_.Lock()->sinks;
    for (const SinkSet::value_type& sink : *sinks) {
        Deliver(*record, *sinks, sink);
    }
}

void Worker::DeliverAll() noexcept
{
    while (!queue_.IsEmpty()) {
        DeliverOne();
    }
}

void Worker::MakeReport() noexcept
{
    clock_.Restart(GetTickCount());
    try {
        report_();
    } catch (...) { // NOLINT(bugprone-empty-catch): the next period makes the next report
    }
}

// A wait that failed makes a report, as a wait that timed out does. Until the next report is due,
// the worker looks at the queue again and again and waits for nothing: every wait may fail. The
// pauses leave the processor to others.
void Worker::WorkWithoutSignal() noexcept
{
    DeliverAll();
    MakeReport();
    do {
        Sleep(kPauseWithoutSignalMs);
        DeliverAll();
    } while (!stopping_ && clock_.TimeUntilDue(GetTickCount()) != 0);
}

void Worker::Work() noexcept
{
    for (;;) {
        const std::uint32_t timeoutMs = clock_.TimeUntilDue(GetTickCount());
        switch (signal_.Wait(timeoutMs)) {
        case WorkerSignal::Result::kStop:
            DeliverAll();
            return;
        case WorkerSignal::Result::kRecord:
            DeliverOne();
            break;
        case WorkerSignal::Result::kTimedOut:
            MakeReport();
            break;
        case WorkerSignal::Result::kFailed:
            if (stopping_) {
                DeliverAll();
                return;
            }
            WorkWithoutSignal();
            break;
        }
    }
}

unsigned __stdcall Worker::ThreadEntry(void* worker) noexcept
{
    static_cast<Worker*>(worker)->Work();
    return 0;
}

} // namespace vqrx::log::log_perf::v2
