#include "log_perf/queue/Worker.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "Watched.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace vqrx::test {
namespace {

using log::log_perf::v2::GuardedReceivers;
using log::log_perf::v2::MessageQueue;
using log::log_perf::v2::SinkSet;
using log::log_perf::v2::Worker;
using testing::ElementsAre;

class WorkerTest : public testing::Test {
protected:
    WorkerTest()
    {
        receivers_.Lock()->sinks = std::make_shared<const SinkSet>(SinkSet{{&sink_, nullptr}});
    }

    void Append(Worker& worker, std::string_view text)
    {
        ASSERT_TRUE(queue_.Append(2, {}, text));
        worker.RecordAppended();
    }

    CapturingSink sink_;
    MessageQueue queue_;
    GuardedReceivers receivers_;
};

TEST_F(WorkerTest, Each_record_reaches_the_sink_in_order)
{
    Worker worker(queue_, receivers_, 1000, [] {});
    Append(worker, "first");
    ASSERT_TRUE(sink_.WaitForCount(1));
    Append(worker, "second");
    ASSERT_TRUE(sink_.WaitForCount(2));
    EXPECT_THAT(sink_.Texts(), ElementsAre("first", "second"));
}

TEST_F(WorkerTest, The_destructor_waits_until_every_queued_record_is_delivered)
{
    {
        Worker worker(queue_, receivers_, 1000, [] {});
        for (int i = 0; i < 500; ++i) {
            Append(worker, "text");
        }
    }
    EXPECT_TRUE(queue_.IsEmpty());
    EXPECT_EQ(500U, sink_.Texts().size());
}

TEST_F(WorkerTest, A_period_without_records_ends_with_a_report)
{
    Watched reports(0);
    const Worker worker(queue_, receivers_, 1, [&] { reports.Apply([](int& n) { ++n; }); });
    EXPECT_TRUE(reports.WaitUntil([](int n) { return n >= 3; }));
}

using WaitForMany = DWORD WINAPI(DWORD, const HANDLE*, BOOL, DWORD);
WaitForMany* realWaitForMany = nullptr;
std::atomic<DWORD> testThread{0};
std::atomic<int> wouldWait{0};

// On the worker thread the system cannot wait, although both objects exist.
DWORD WINAPI FailOfWorker(DWORD count, const HANDLE* handles, BOOL all, DWORD timeout)
{
    if (GetCurrentThreadId() == testThread) {
        return realWaitForMany(count, handles, all, timeout);
    }
    ++wouldWait;
    return WAIT_FAILED;
}

std::atomic<DWORD> tick{0};

DWORD WINAPI StandingTick()
{
    return tick;
}

Watched<int>* pauses = nullptr;

void WINAPI CountPauses(DWORD)
{
    pauses->Apply([](int& n) { ++n; });
    SwitchToThread();
}

TEST_F(WorkerTest, A_failed_wait_makes_one_report_a_period)
{
    const ImportPatch wait("WaitForMultipleObjects", &FailOfWorker, realWaitForMany);
    const ImportPatch ticks("GetTickCount", &StandingTick);
    const ImportPatch pause("Sleep", &CountPauses);
    testThread = GetCurrentThreadId();
    tick = 5000;
    Watched paused(0);
    pauses = &paused;
    Watched reports(0);
    Worker worker(queue_, receivers_, 1000, [&] { reports.Apply([](int& n) { ++n; }); });
    ASSERT_TRUE(reports.WaitUntil([](int n) { return n == 1; }));
    tick = 5999;
    Append(worker, "record");
    ASSERT_TRUE(sink_.WaitForCount(1));
    const int before = paused.Get();
    EXPECT_TRUE(paused.WaitUntil([before](int n) { return n > before + 2; }));
    EXPECT_EQ(reports.Get(), 1);
    tick = 6000;
    EXPECT_TRUE(reports.WaitUntil([](int n) { return n == 2; }));
}

TEST_F(WorkerTest, A_failed_wait_makes_a_report_and_costs_neither_records_nor_the_end)
{
    const ImportPatch patch("WaitForMultipleObjects", &FailOfWorker, realWaitForMany);
    testThread = GetCurrentThreadId();
    wouldWait = 0;
    Watched reports(0);
    {
        Worker worker(queue_, receivers_, 1, [&] { reports.Apply([](int& n) { ++n; }); });
        EXPECT_TRUE(reports.WaitUntil([](int n) { return n >= 3; }));
        Append(worker, "first");
        EXPECT_TRUE(sink_.WaitForCount(1));
        Append(worker, "second");
    }
    EXPECT_THAT(sink_.Texts(), ElementsAre("first", "second"));
    EXPECT_LT(0, wouldWait);
}

TEST_F(WorkerTest, A_report_that_throws_costs_neither_records_nor_later_reports)
{
    Watched reports(0);
    {
        Worker worker(queue_, receivers_, 1, [&] {
            reports.Apply([](int& n) { ++n; });
            throw std::runtime_error("report failed");
        });
        EXPECT_TRUE(reports.WaitUntil([](int n) { return n >= 2; }));
        Append(worker, "text");
    }
    EXPECT_THAT(sink_.Texts(), ElementsAre("text"));
}

} // namespace
} // namespace vqrx::test
