#include "log_perf/LibLogPerf.h"

#include "AllocationFault.h"
#include "CapturingSink.h"
#include "ImportPatch.h"
#include "exception_utils/AtlException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <process.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using testing::ElementsAre;

TEST(LibLogPerfFaults, A_sink_that_throws_loses_one_message_and_the_others_none)
{
    std::array<CapturingSink, 3> sinks;
    {
        LibLogPerf logger;
        for (CapturingSink& sink : sinks) {
            logger.AddSink(&sink);
        }
        sinks[0].ThrowAtNextWrite();
        logger.Log(2, "first");
        ASSERT_TRUE(sinks[2].WaitForCount(1));
        sinks[1].ThrowAtNextWrite();
        logger.Log(2, "second");
    }
    EXPECT_THAT(sinks[0].Texts(), ElementsAre("second"));
    EXPECT_THAT(sinks[1].Texts(), ElementsAre("first"));
    EXPECT_THAT(sinks[2].Texts(), ElementsAre("first", "second"));
}

TEST(LibLogPerfFaults, A_failed_allocation_in_Log_loses_only_that_message)
{
    CapturingSink sink;
    int lost = 0;
    {
        LibLogPerf logger;
        logger.AddSink(&sink);
        for (std::size_t succeeding = 0;; ++succeeding) {
            bool happened = false;
            {
                const AllocationFault fault(succeeding);
                logger.Log(2, "%s", "a text that is longer than what a string keeps in itself");
                happened = fault.Happened();
            }
            if (!happened) {
                break;
            }
            ++lost;
            ASSERT_LT(lost, 100);
        }
        // Another thread can take the locks.
        std::thread([&logger] { logger.Log(2, "after"); }).join();
    }
    EXPECT_LT(0, lost);
    EXPECT_THAT(sink.Texts(),
                ElementsAre("a text that is longer than what a string keeps in itself", "after"));
}

TEST(LibLogPerfFaults, A_failed_allocation_in_AddSink_leaves_the_sinks_unchanged)
{
    CapturingSink kept;
    CapturingSink refused;
    {
        LibLogPerf logger;
        logger.AddSink(&kept);
        {
            const AllocationFault fault(0);
            EXPECT_THROW(logger.AddSink(&refused), std::bad_alloc);
        }
        logger.Log(2, "text");
    }
    EXPECT_THAT(kept.Texts(), ElementsAre("text"));
    EXPECT_THAT(refused.Texts(), ElementsAre());
}

TEST(LibLogPerfFaults, A_failed_allocation_in_the_constructor_throws_bad_alloc)
{
    std::size_t faults = 0;
    for (;; ++faults) {
        ASSERT_LT(faults, 100U);
        const AllocationFault fault(faults);
        try {
            const LibLogPerf logger;
            EXPECT_FALSE(fault.Happened());
            break;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(fault.Happened());
        }
    }
    EXPECT_LT(0U, faults);
}

// Replacements of system functions, each patched in while one logger is made.

using InitializeSection = BOOL WINAPI(CRITICAL_SECTION*, DWORD);
using DeleteSection = void WINAPI(CRITICAL_SECTION*);
InitializeSection* realInitialize = nullptr;
DeleteSection* realDelete = nullptr;
std::atomic<int> sectionsLeft{0};
std::atomic<int> sectionsAlive{0};
std::atomic<bool> onlySpinCountZero{true};

BOOL WINAPI InitializeSome(CRITICAL_SECTION* section, DWORD spinCount)
{
    onlySpinCountZero = onlySpinCountZero && spinCount == 0;
    if (sectionsLeft-- <= 0) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    ++sectionsAlive;
    return realInitialize(section, spinCount);
}

void WINAPI CountDelete(CRITICAL_SECTION* section)
{
    --sectionsAlive;
    realDelete(section);
}

TEST(LibLogPerfFaults, A_lock_that_cannot_be_made_throws_the_system_error_and_leaks_nothing)
{
    const ImportPatch initialize("InitializeCriticalSectionAndSpinCount", &InitializeSome,
                                 realInitialize);
    const ImportPatch remove("DeleteCriticalSection", &CountDelete, realDelete);
    sectionsAlive = 0;
    constexpr int kLocks = 5; // sinks, statistics, buffer-full block, log, queue
    for (int made = 0; made < kLocks; ++made) {
        sectionsLeft = made;
        try {
            const LibLogPerf logger;
            ADD_FAILURE() << "constructed with only " << made << " locks";
        } catch (const ATL::CAtlException& exception) {
            EXPECT_EQ(static_cast<HRESULT>(0x80070008), static_cast<HRESULT>(exception));
        }
        EXPECT_EQ(0, sectionsAlive);
    }
    sectionsLeft = kLocks;
    {
        const LibLogPerf logger;
        EXPECT_EQ(kLocks, sectionsAlive);
    }
    EXPECT_EQ(0, sectionsAlive);
    EXPECT_TRUE(onlySpinCountZero);
}

HANDLE WINAPI NoSemaphore(SECURITY_ATTRIBUTES*, LONG, LONG, const char*)
{
    return nullptr;
}

HANDLE WINAPI NoEvent(SECURITY_ATTRIBUTES*, BOOL, BOOL, const char*)
{
    return nullptr;
}

std::uintptr_t NoThread(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*)
{
    return 0;
}

std::unique_ptr<LibLogPerf> MadeWithout(const char* function, void* replacement)
{
    const ImportPatch patch(function, replacement);
    return std::make_unique<LibLogPerf>();
}

void ExpectToDeliver(LibLogPerf& logger, CapturingSink& sink)
{
    logger.AddSink(&sink);
    logger.Log(2, "first");
    ASSERT_TRUE(sink.WaitForCount(1));
    logger.Log(2, "second");
    ASSERT_TRUE(sink.WaitForCount(2));
    logger.Log(2, "third");
}

TEST(LibLogPerfFaults, Without_the_semaphore_every_message_is_delivered_and_the_destructor_returns)
{
    CapturingSink sink;
    {
        const auto logger = MadeWithout("CreateSemaphoreA", reinterpret_cast<void*>(&NoSemaphore));
        ExpectToDeliver(*logger, sink);
    }
    EXPECT_THAT(sink.Texts(), ElementsAre("first", "second", "third"));
}

TEST(LibLogPerfFaults, Without_the_stop_event_every_message_is_delivered_and_the_destructor_returns)
{
    CapturingSink sink;
    {
        const auto logger = MadeWithout("CreateEventA", reinterpret_cast<void*>(&NoEvent));
        ExpectToDeliver(*logger, sink);
    }
    EXPECT_THAT(sink.Texts(), ElementsAre("first", "second", "third"));
}

TEST(LibLogPerfFaults, Without_the_worker_thread_standard_error_says_so_and_the_destructor_delivers)
{
    std::ostringstream error;
    std::streambuf* const before = std::cerr.rdbuf(error.rdbuf());
    CapturingSink sink;
    {
        const ImportPatch patch("_beginthreadex", reinterpret_cast<void*>(&NoThread));
        LibLogPerf logger;
        logger.AddSink(&sink);
        for (int i = 0; i < 1100; ++i) {
            logger.Log(2, "%d", i);
        }
        EXPECT_THAT(sink.Texts(), ElementsAre());
    }
    std::cerr.rdbuf(before);
    EXPECT_EQ(1001U, sink.Texts().size());
    EXPECT_EQ("Overflowed message queue.", sink.Texts().back());
    EXPECT_EQ("The log has no thread. It writes its messages when it gets one, or at its end\n",
              error.str());
}

TEST(LibLogPerfFaults, A_worker_thread_that_cannot_be_made_is_made_for_a_later_message)
{
    CapturingSink sink;
    const auto logger = MadeWithout("_beginthreadex", reinterpret_cast<void*>(&NoThread));
    ExpectToDeliver(*logger, sink);
}

using WaitMany = DWORD WINAPI(DWORD, const HANDLE*, BOOL, DWORD);
WaitMany* realWaitMany = nullptr;
std::atomic<int> failedWaits{0};
std::atomic<int> pauses{0};

DWORD WINAPI CountFailedWaits(DWORD count, const HANDLE* handles, BOOL all, DWORD timeout)
{
    const DWORD result = realWaitMany(count, handles, all, timeout);
    if (result == WAIT_FAILED) {
        const DWORD error = GetLastError();
        ++failedWaits;
        SetLastError(error);
    }
    return result;
}

void WINAPI PassInAnInstant(DWORD milliseconds)
{
    if (milliseconds == 10) {
        ++pauses;
    }
    SwitchToThread();
}

TEST(LibLogPerfFaults, Without_kernel_objects_every_failed_wait_is_followed_by_a_pause)
{
    const ImportPatch wait("WaitForMultipleObjects", &CountFailedWaits, realWaitMany);
    const ImportPatch pause("Sleep", &PassInAnInstant);
    failedWaits = 0;
    pauses = 0;
    CapturingSink sink;
    {
        const auto logger = MadeWithout("CreateSemaphoreA", reinterpret_cast<void*>(&NoSemaphore));
        ExpectToDeliver(*logger, sink);
    }
    // The last failed wait has no pause: the worker then sees that it must stop.
    EXPECT_LT(0, pauses);
    EXPECT_LE(failedWaits - 1, pauses);
}

} // namespace
} // namespace vqrx::test
