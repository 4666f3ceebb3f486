// Runs all operations that any thread may call at the same time. In a native build the thread
// sanitizer looks for races.
#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "TempFolder.h"
#include "Watched.h"
#include "log_perf/ring/LogFileSink.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::IPerformanceObserver;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::LogFileSink;

/// Runs each task `rounds` times on a thread of its own. All threads start together.
void AllAtOnce(int rounds, const std::vector<std::function<void(int)>>& tasks)
{
    std::vector<std::thread> threads;
    std::atomic<std::size_t> ready = 0;
    threads.reserve(tasks.size());
    for (const auto& task : tasks) {
        threads.emplace_back([&] {
            for (++ready; ready < tasks.size();) {
                std::this_thread::yield();
            }
            for (int round = 0; round < rounds; ++round) {
                task(round);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

class CountingObserver : public IPerformanceObserver {
public:
    void OnPerformance(std::int32_t, std::int32_t, std::int32_t, std::int32_t) override
    {
        ++calls_;
    }

private:
    int calls_ = 0; // used by the worker thread only
};

/// Counts the messages between two reported overflows. Blocks until Begin is called: by then more
/// messages were logged than the queue holds.
class OverflowSink : public log::log_perf::v2::ILogSink {
public:
    void Write(int level, const log::log_perf::v2::Timestamp*, const char*) override
    {
        static_cast<void>(begun_.WaitUntil([](bool begun) { return begun; }));
        if (level != 0) {
            ++messages_;
            return;
        }
        tooEarly_ += messages_ < 1000 ? 1 : 0;
        messages_ = 0;
        ++overflows_;
    }

    void Begin()
    {
        begun_.Apply([](bool& begun) { begun = true; });
    }

    // Call only after the logger was destroyed.
    int Overflows() const { return overflows_; }
    int TooEarly() const { return tooEarly_; }

private:
    Watched<bool> begun_{false};
    int messages_ = 0;
    int overflows_ = 0;
    int tooEarly_ = 0;
};

} // namespace

TEST(LibLogPerfThreads, Each_overflow_is_reported_after_at_least_a_thousand_messages)
{
    OverflowSink sink;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        const auto flood = [&](int round) {
            for (int i = 0; i < 1500; ++i) {
                logger.Log(2, "%d", i);
            }
            sink.Begin();
            if (round % 4 == 0) { // lets the worker empty the queue without an overflow
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        };
        AllAtOnce(100, {flood, flood});
    }
    EXPECT_LT(0, sink.Overflows());
    EXPECT_EQ(0, sink.TooEarly());
}

TEST(LibLogPerfThreads, All_operations_may_run_at_the_same_time)
{
    std::array<CapturingSink, 8> sinks;
    CapturingSink rows;
    CountingObserver observer;
    CapturingSink first;
    {
        LibLogPerf logger;
        logger.AddSink(&first);
        AllAtOnce(60,
                  {
                      [&](int round) { logger.Log(2, "a %d", round); },
                      [&](int round) { logger.Log(1, "b %d", round); },
                      [&](int round) { logger.AddSink(&sinks[static_cast<unsigned>(round) % 8]); },
                      [&](int round) {
                          logger.SetPerformanceSink(round % 2 == 0 ? &rows : nullptr);
                          logger.SetPerformanceObserver(round % 2 == 0 ? nullptr : &observer);
                      },
                      [&](int round) {
                          logger.RegisterPin(std::to_string(round % 5).c_str());
                          logger.NotifyBufferFull(std::to_string(round % 7).c_str());
                      },
                      [&](int round) {
                          logger.SetBufferFullSettings({1000, 1, 3, 0});
                          logger.CheckBufferFullPeriod();
                          logger.AddPoliticChoices(round);
                      },
                      [&](int) {
                          logger.IncrementResync();
                          logger.IncrementTsDiscontinuity();
                          logger.IncrementDecodedPictures();
                      },
                  });
    }
    for (int round = 0; round < 60; ++round) {
        EXPECT_EQ(1U, first.Count(2, "a " + std::to_string(round)));
        EXPECT_EQ(1U, first.Count(1, "b " + std::to_string(round)));
    }
}

TEST(LibLogPerfThreads, A_file_sink_may_be_read_and_configured_while_the_logger_writes)
{
    const TempFolder folder;
    LogFileSink sink;
    sink.SetFileName(folder.File("a.log"));
    LibLogPerf logger;
    logger.AddSink(&sink);
    logger.Log(2, "first");
    while (sink.GetEntries(0, -1).empty()) {
        std::this_thread::yield();
    }
    AllAtOnce(40, {
                      [&](int round) { logger.Log(2, "message %d", round); },
                      [&](int) {
                          std::int64_t from = 0;
                          std::int64_t to = 0;
                          if (sink.GetRange(0, -1, from, to)) {
                              EXPECT_LE(from, to);
                          }
                      },
                      [&](int) {
                          const auto entries = sink.GetEntries(0, -1);
                          for (std::size_t index = 1; index < entries.size(); ++index) {
                              EXPECT_LT(entries[index - 1].first, entries[index].first);
                          }
                      },
                      [&](int round) {
                          sink.SetSizeLimit(round % 2 == 0 ? 0 : 400);
                          sink.SetThreshold(3);
                      },
                  });
}

} // namespace vqrx::test
