#include "log_perf/WorkerSignal.h"

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
