#include "log_perf/queue/WorkerSignal.h"

#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <thread>

namespace vqrx::test {
namespace {

using log::log_perf::v2::WorkerSignal;
using Result = WorkerSignal::Result;

using Release = BOOL WINAPI(HANDLE, LONG, LONG*);
Release* realRelease = nullptr;
std::atomic<int> releases{0};

BOOL WINAPI CountRelease(HANDLE semaphore, LONG count, LONG* previous)
{
    ++releases;
    return realRelease(semaphore, count, previous);
}

// The waits of one thread that waits without a time-out until it has had so many records.
void TakeRecords(WorkerSignal& signal, int count)
{
    while (count != 0) {
        count -= signal.Wait(INFINITE) == Result::kRecord ? 1 : 0;
    }
}

using WaitMany = DWORD WINAPI(DWORD, const HANDLE*, BOOL, DWORD);
WaitMany* realWaitMany = nullptr;
std::atomic<DWORD> simulatedTick{0};
std::atomic<int> switches{0};
std::atomic<DWORD> timeoutAsked{0};

DWORD WINAPI Tick()
{
    return simulatedTick;
}

// A busy machine: whoever gives way comes back after its other threads have had their turn.
BOOL WINAPI SwitchSlowly()
{
    ++switches;
    simulatedTick += 30;
    return TRUE;
}

DWORD WINAPI WaitNoTime(DWORD count, const HANDLE* handles, BOOL all, DWORD timeout)
{
    timeoutAsked = timeout;
    return realWaitMany(count, handles, all, 0);
}

/// A worker that has just had a record, on a machine whose ticks begin at the one that is given.
class BusyMachine : public testing::Test {
protected:
    explicit BusyMachine(DWORD tick = 0xFFFFFFF0) // wraps while the worker looks
    {
        realWaitMany = wait_.Original<WaitMany>();
        simulatedTick = tick;
        switches = 0;
        signal_.Post();
        EXPECT_EQ(Result::kRecord, signal_.Wait(0));
    }

    ImportPatch tick_{"GetTickCount", &Tick};
    ImportPatch switch_{"SwitchToThread", &SwitchSlowly};
    ImportPatch wait_{"WaitForMultipleObjects", &WaitNoTime};
    WorkerSignal signal_;
};

TEST_F(BusyMachine, does_not_let_a_worker_look_for_records_beyond_its_time)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(100));
    EXPECT_EQ(4, switches);
    EXPECT_EQ(0U, timeoutAsked);
}

TEST_F(BusyMachine, lets_a_worker_sleep_for_what_is_left_of_its_time)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(10000));
    EXPECT_EQ(100, switches);
    EXPECT_EQ(7000U, timeoutAsked);
}

TEST_F(BusyMachine, lets_a_worker_without_a_deadline_sleep_without_one)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(INFINITE));
    EXPECT_EQ(INFINITE, timeoutAsked);
}

TEST(WorkerSignal, that_nobody_gave_times_out)
{
    WorkerSignal signal;
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(1));
}

TEST(WorkerSignal, tells_of_as_many_records_as_were_posted)
{
    WorkerSignal signal;
    signal.Post();
    signal.Post();
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, tells_of_the_stop_before_records_and_once)
{
    WorkerSignal signal;
    signal.Post();
    signal.Stop();
    EXPECT_EQ(Result::kStop, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, does_not_touch_the_kernel_while_the_worker_is_awake)
{
    const ImportPatch patch("ReleaseSemaphore", &CountRelease);
    realRelease = patch.Original<Release>();
    releases = 0;
    WorkerSignal signal;
    for (int i = 0; i < 1000; ++i) {
        signal.Post();
    }
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(Result::kRecord, signal.Wait(0));
    }
    EXPECT_EQ(Result::kTimedOut, signal.Wait(1));
    signal.Post();
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(0, releases);
}

TEST(WorkerSignal, wakes_a_worker_that_sleeps_for_every_record_that_comes)
{
    WorkerSignal signal;
    std::thread worker([&signal] { TakeRecords(signal, 2000); });
    for (int i = 0; i < 2000; ++i) {
        signal.Post();
        if (i % 64 == 0) {
            Sleep(0); // now and then the worker gets to sleep
        }
    }
    worker.join();
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, tells_a_worker_that_sleeps_of_the_stop)
{
    WorkerSignal signal;
    std::atomic<Result> told{Result::kFailed};
    std::thread worker([&] { told = signal.Wait(INFINITE); });
    signal.Stop();
    worker.join();
    EXPECT_EQ(Result::kStop, told);
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

} // namespace
} // namespace vqrx::test
