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

// Waits without a timeout until this many records were returned.
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

// A busy machine: SwitchToThread returns only after other threads have run for 30 ms.
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

/// A worker that has just taken a record, on a busy machine with simulated ticks.
class BusyMachine : public testing::Test {
protected:
    explicit BusyMachine(DWORD tick = 0xFFFFFFF0) // the tick wraps while the worker looks
    {
        simulatedTick = tick;
        switches = 0;
        signal_.Post();
        EXPECT_EQ(Result::kRecord, signal_.Wait(0));
    }

    ImportPatch tick_{"GetTickCount", &Tick};
    ImportPatch switch_{"SwitchToThread", &SwitchSlowly};
    ImportPatch wait_{"WaitForMultipleObjects", &WaitNoTime, realWaitMany};
    WorkerSignal signal_;
};

TEST_F(BusyMachine, The_worker_does_not_look_for_records_beyond_its_timeout)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(100));
    EXPECT_EQ(4, switches);
    EXPECT_EQ(0U, timeoutAsked);
}

TEST_F(BusyMachine, The_worker_sleeps_for_the_rest_of_its_timeout)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(10000));
    EXPECT_EQ(100, switches);
    EXPECT_EQ(7000U, timeoutAsked);
}

TEST_F(BusyMachine, A_worker_without_a_timeout_sleeps_without_one)
{
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(INFINITE));
    EXPECT_EQ(INFINITE, timeoutAsked);
}

WorkerSignal* lateSignal = nullptr;
DWORD lateAnswer = WAIT_TIMEOUT;
int latePosts = 0;

// A record arrives after the wait has ended, before the worker hears of it.
DWORD WINAPI EndAsARecordArrives(DWORD count, const HANDLE* handles, BOOL all, DWORD)
{
    if (latePosts-- > 0) {
        lateSignal->Post();
        return lateAnswer;
    }
    return realWaitMany(count, handles, all, 0); // finds a signal that nobody has taken
}

/// A worker whose wait ends by itself while a record arrives.
class LateRecord : public testing::Test {
protected:
    Result WaitThatEndsWith(DWORD answer)
    {
        lateSignal = &signal_;
        lateAnswer = answer;
        latePosts = 1;
        return signal_.Wait(1000);
    }

    ImportPatch wait_{"WaitForMultipleObjects", &EndAsARecordArrives, realWaitMany};
    WorkerSignal signal_;
};

TEST_F(LateRecord, A_wait_that_gives_up_returns_the_record_that_just_arrived)
{
    for (const DWORD answer : {DWORD{WAIT_TIMEOUT}, DWORD{WAIT_FAILED}}) {
        EXPECT_EQ(Result::kRecord, WaitThatEndsWith(answer));
        EXPECT_EQ(Result::kTimedOut, signal_.Wait(1000)); // there was one record
        signal_.Post();
        EXPECT_EQ(Result::kRecord, signal_.Wait(1000)); // the worker counts as awake again
    }
}

DWORD WINAPI FailToWait(HANDLE, DWORD)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return WAIT_FAILED;
}

TEST_F(LateRecord, A_wait_that_gives_up_takes_a_record_also_while_other_waits_fail)
{
    const ImportPatch fails("WaitForSingleObject", &FailToWait);
    EXPECT_EQ(Result::kRecord, WaitThatEndsWith(WAIT_TIMEOUT));
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(1000)); // there was one record
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(1000)); // the worker counts as awake again
}

TEST_F(LateRecord, A_wait_that_Stop_ended_keeps_the_record_that_just_arrived)
{
    EXPECT_EQ(Result::kStop, WaitThatEndsWith(WAIT_OBJECT_0));
    EXPECT_EQ(Result::kRecord, signal_.Wait(1000));
    EXPECT_EQ(Result::kTimedOut, signal_.Wait(1000));
}

TEST(WorkerSignal, A_wait_without_records_times_out)
{
    WorkerSignal signal;
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(1));
}

TEST(WorkerSignal, Each_posted_record_is_returned_once)
{
    WorkerSignal signal;
    signal.Post();
    signal.Post();
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, Stop_is_returned_once_and_before_records)
{
    WorkerSignal signal;
    signal.Post();
    signal.Stop();
    EXPECT_EQ(Result::kStop, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, The_kernel_is_not_called_while_the_worker_is_awake)
{
    const ImportPatch patch("ReleaseSemaphore", &CountRelease, realRelease);
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

TEST(WorkerSignal, A_sleeping_worker_is_woken_for_every_record)
{
    WorkerSignal signal;
    std::thread worker([&signal] { TakeRecords(signal, 2000); });
    for (int i = 0; i < 2000; ++i) {
        signal.Post();
        if (i % 64 == 0) {
            Sleep(0); // gives the worker a chance to fall asleep
        }
    }
    worker.join();
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, A_sleeping_worker_is_woken_for_Stop)
{
    WorkerSignal signal;
    std::atomic<Result> result{Result::kFailed};
    std::thread worker([&] { result = signal.Wait(INFINITE); });
    signal.Stop();
    worker.join();
    EXPECT_EQ(Result::kStop, result);
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

} // namespace
} // namespace vqrx::test
