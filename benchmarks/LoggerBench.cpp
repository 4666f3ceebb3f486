// Duration of a call of the logger, and records per second to the file, compared with the
// asynchronous logger of spdlog with its plain file sink. That sink flushes every record, as the
// product's sink does.
#include "LogLevel.h"
#include "Measure.h"
#include "log_perf/LibLogPerf.h"
#include "log_perf/ring/LogFileSink.h"

#include <spdlog/async.h>
#include <spdlog/async_logger.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include <windows.h>

namespace vqrx::bench {
namespace {

using namespace log::log_perf::v2;
using system::win32::v1::UniqueKernelHandle;

constexpr int kBurst = 500; // half of the queue, so that no record is lost
constexpr std::uint32_t kRingSize = 0x100000;

/// Counts written records and waits for a number of them.
class Arrivals {
public:
    /// Sets the number of further records for which Wait waits.
    void Expect(std::size_t more) { target_ = count_ + more; }
    void Arrived()
    {
        if (++count_ == target_) {
            SetEvent(event_.Get());
        }
    }
    void Wait() const { WaitForSingleObject(event_.Get(), 60000); }
    /// Waits until at least count records are written. Polls, because an event would cost the
    /// writer as much time as ten records.
    void WaitForCount(std::size_t count) const
    {
        while (count_ < count) {
            Sleep(1);
        }
    }
    [[nodiscard]] std::size_t Count() const { return count_; }

private:
    std::atomic<std::size_t> count_ = 0;
    std::atomic<std::size_t> target_ = 0;
    UniqueKernelHandle event_{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
};

class OurSink final : public ILogSink {
public:
    OurSink(Arrivals& arrivals, const std::string& file)
        : arrivals_(arrivals)
    {
        sink_.SetFileName(file);
        sink_.SetSizeLimit(kRingSize);
    }
    void Write(int level, const Timestamp* timestamp, const char* text) override
    {
        sink_.Write(level, timestamp, text);
        arrivals_.Arrived();
    }

private:
    Arrivals& arrivals_;
    LogFileSink sink_;
};

class Ours {
public:
    explicit Ours(const std::string& folder)
        : sink_(arrivals, folder + "\\ours.log")
    {
        logger_.AddSink(&sink_);
    }
    void Log(int number)
    {
        logger_.Log(log::i_logger::v0::kLevelInformation, "Start DaemonId(%d) PId(%d) : %s ", 7,
                    number, kDaemonPath);
    }

    Arrivals arrivals;

private:
    OurSink sink_;
    LibLogPerf logger_;
};

class TheirSink final : public spdlog::sinks::sink {
public:
    TheirSink(Arrivals& arrivals, const std::string& file)
        : arrivals_(arrivals)
        , sink_(std::make_shared<spdlog::sinks::basic_file_sink_mt>(file, true))
    {
    }
    void log(const spdlog::details::log_msg& message) override { sink_->log(message); }
    void flush() override
    {
        sink_->flush();
        arrivals_.Arrived();
    }
    void set_pattern(const std::string& pattern) override { sink_->set_pattern(pattern); }
    void set_formatter(std::unique_ptr<spdlog::formatter> formatter) override
    {
        sink_->set_formatter(std::move(formatter));
    }

private:
    Arrivals& arrivals_;
    std::shared_ptr<spdlog::sinks::basic_file_sink_mt> sink_;
};

class Theirs {
public:
    explicit Theirs(const std::string& folder)
        : pool_(std::make_shared<spdlog::details::thread_pool>(8192, 1))
        , logger_(std::make_shared<spdlog::async_logger>(
              "bench", std::make_shared<TheirSink>(arrivals, folder + "\\theirs.log"), pool_,
              spdlog::async_overflow_policy::block))
    {
        logger_->flush_on(spdlog::level::trace);
    }
    void Log(int number)
    {
        logger_->info("Start DaemonId({}) PId({}) : {} ", 7, number, kDaemonPath);
    }

    Arrivals arrivals;

private:
    std::shared_ptr<spdlog::details::thread_pool> pool_;
    std::shared_ptr<spdlog::async_logger> logger_;
};

template <typename Logger>
void Bursts(const std::string& name, const Settings& settings)
{
    Logger logger(settings.scratch);
    const int bursts = settings.quick ? 4 : 40;
    double calling = 0;
    for (int burst = -1; burst < bursts; ++burst) { // The first burst warms up and does not count.
        logger.arrivals.Expect(kBurst);
        const Stopwatch watch;
        for (int i = 0; i < kBurst; ++i) {
            logger.Log(i);
        }
        calling += burst >= 0 ? watch.Seconds() : 0;
        logger.arrivals.Wait();
    }
    Report("log.one_caller_ns." + name, calling / (bursts * kBurst) * 1e9);
}

// Writes as fast as the file allows. At most 900 records wait at a time, fewer than the queue
// holds, so that no record is lost.
template <typename Logger>
void Sustained(const std::string& name, const Settings& settings)
{
    constexpr std::size_t kMaxWaiting = 900;
    Logger logger(settings.scratch);
    const std::size_t records = settings.quick ? 5000 : 50000;
    const Stopwatch watch;
    for (std::size_t i = 0; i < records; ++i) {
        if (i - logger.arrivals.Count() >= kMaxWaiting) {
            logger.arrivals.WaitForCount(i - kMaxWaiting / 2);
        }
        logger.Log(static_cast<int>(i));
    }
    logger.arrivals.WaitForCount(records);
    Report("file.records_per_second." + name, static_cast<double>(records) / watch.Seconds());
}

template <typename Logger>
void FourCallers(const std::string& name, const Settings& settings)
{
    constexpr LONG kCallers = 4;
    Logger logger(settings.scratch);
    const int bursts = settings.quick ? 4 : 40;
    const UniqueKernelHandle begin(CreateSemaphoreA(nullptr, 0, kCallers, nullptr));
    const UniqueKernelHandle done(CreateSemaphoreA(nullptr, 0, kCallers, nullptr));
    std::array<double, 4> calling{};
    std::vector<std::thread> callers;
    for (std::size_t caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&, caller] {
            for (int burst = -1; burst < bursts; ++burst) {
                WaitForSingleObject(begin.Get(), INFINITE);
                const Stopwatch watch;
                for (int i = 0; i < kBurst / 4; ++i) {
                    logger.Log(i);
                }
                calling.at(caller) += burst >= 0 ? watch.Seconds() : 0;
                ReleaseSemaphore(done.Get(), 1, nullptr);
            }
        });
    }
    for (int burst = -1; burst < bursts; ++burst) {
        logger.arrivals.Expect(kBurst);
        ReleaseSemaphore(begin.Get(), kCallers, nullptr);
        for (std::size_t caller = 0; caller < 4; ++caller) {
            WaitForSingleObject(done.Get(), INFINITE);
        }
        logger.arrivals.Wait();
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    Report("log.four_callers_ns." + name,
           std::accumulate(calling.begin(), calling.end(), 0.0) / (bursts * kBurst) * 1e9);
}

template <typename Logger>
void Flood(const std::string& name, const Settings& settings)
{
    const int records = settings.quick ? 5000 : 50000;
    double seconds = 0;
    Arrivals* arrivals = nullptr;
    auto logger = std::make_unique<Logger>(settings.scratch);
    arrivals = &logger->arrivals;
    const Stopwatch watch;
    for (int i = 0; i < records; ++i) {
        logger->Log(i);
    }
    seconds = watch.Seconds();
    Report("log.flood_ns." + name, seconds / records * 1e9);
    // All records are written or lost if the count stays the same for 200 ms.
    std::size_t before = 0;
    do {
        before = arrivals->Count();
        Sleep(200);
    } while (arrivals->Count() != before);
    Report("log.flood_arrived_share." + name, static_cast<double>(arrivals->Count()) / records);
}

} // namespace

void LoggerBench(const Settings& settings)
{
    Bursts<Theirs>("spdlog", settings);
    Bursts<Ours>("ours", settings);
    Sustained<Theirs>("spdlog", settings);
    Sustained<Ours>("ours", settings);
    FourCallers<Theirs>("spdlog", settings);
    FourCallers<Ours>("ours", settings);
    Flood<Theirs>("spdlog", settings);
    Flood<Ours>("ours", settings);
}

} // namespace vqrx::bench
