#include "ForcedEnd.h"

#include "CapturingSink.h"
#include "ErrorFile.h"
#include "ImportPatch.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>

namespace vqrx::test {
namespace {

using app::v0::ForcedEnd;
using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kPatienceMs = 60000;

int terminatedWith = -1;
CapturingSink* sinkAtTheEnd = nullptr;
std::size_t loggedAtTheEnd = 0;

void NoteEndOfProcess(UINT exitCode) noexcept
{
    terminatedWith = static_cast<int>(exitCode);
    loggedAtTheEnd = sinkAtTheEnd->Count(0, "the reason");
}

struct ForcedEndTest : testing::Test {
    ForcedEndTest()
    {
        terminatedWith = -1;
        loggedAtTheEnd = 0;
        sinkAtTheEnd = &sink;
    }

    void LogThrough(log::log_perf::v2::LibLogPerf& logger, ForcedEnd& forcedEnd)
    {
        logger.AddSink(&sink);
        logger.AddSink(&forcedEnd);
    }

    ErrorFile error;
    CapturingSink sink;
};

TEST_F(ForcedEndTest, Reason_is_on_the_log_before_the_process_ends_with_2)
{
    ForcedEnd forcedEnd(kPatienceMs, NoteEndOfProcess);
    log::log_perf::v2::LibLogPerf logger;
    LogThrough(logger, forcedEnd);
    forcedEnd.Now(logger, "the reason");
    EXPECT_EQ(loggedAtTheEnd, 1U);
    EXPECT_EQ(terminatedWith, 2);
    EXPECT_EQ(error.Text(), ""); // the console sink writes the reason there
}

TEST_F(ForcedEndTest, Reason_is_on_standard_error_if_a_sink_has_stopped)
{
    ForcedEnd forcedEnd(100, NoteEndOfProcess);
    log::log_perf::v2::LibLogPerf logger;
    LogThrough(logger, forcedEnd);
    sink.BlockNextWrite();
    forcedEnd.Now(logger, "the reason");
    EXPECT_EQ(error.Text(), "the reason\r\n");
    EXPECT_EQ(terminatedWith, 2);
    sink.Release();
}

HANDLE mayWrite = nullptr;
HANDLE stoppedWrite = nullptr;

/// Replaces WriteFile: a console that has stopped.
BOOL WINAPI StopWriting(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    WaitForSingleObject(mayWrite, INFINITE);
    SetEvent(stoppedWrite);
    return FALSE;
}

TEST_F(ForcedEndTest, Process_ends_even_if_standard_error_has_stopped_too)
{
    const UniqueKernelHandle may(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const UniqueKernelHandle stopped(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    mayWrite = may.Get();
    stoppedWrite = stopped.Get();
    ForcedEnd forcedEnd(100, NoteEndOfProcess);
    log::log_perf::v2::LibLogPerf logger;
    LogThrough(logger, forcedEnd);
    sink.BlockNextWrite();
    const ImportPatch patch("WriteFile", StopWriting);
    forcedEnd.Now(logger, "the reason");
    EXPECT_EQ(terminatedWith, 2);
    SetEvent(mayWrite);
    EXPECT_EQ(WaitForSingleObject(stoppedWrite, kPatienceMs), WAIT_OBJECT_0);
    sink.Release();
}

TEST_F(ForcedEndTest, Program_that_failed_before_prints_its_line_and_ends_with_1)
{
    ForcedEnd forcedEnd(kPatienceMs, NoteEndOfProcess);
    log::log_perf::v2::LibLogPerf logger;
    LogThrough(logger, forcedEnd);
    forcedEnd.ProgramHasFailed("Exception occured : ", "no memory");
    forcedEnd.Now(logger, "the reason");
    EXPECT_EQ(loggedAtTheEnd, 1U);
    EXPECT_EQ(error.Text(), "Exception occured : no memory\r\n");
    EXPECT_EQ(terminatedWith, 1);
}

HANDLE WINAPI RefuseAnyEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

TEST_F(ForcedEndTest, Reason_is_on_the_log_even_if_there_are_no_events)
{
    log::log_perf::v2::LibLogPerf logger;
    const ImportPatch patch("CreateEventA", RefuseAnyEvent);
    ForcedEnd forcedEnd(kPatienceMs, NoteEndOfProcess);
    LogThrough(logger, forcedEnd);
    forcedEnd.Now(logger, "the reason");
    EXPECT_EQ(loggedAtTheEnd, 1U);
    EXPECT_EQ(error.Text(), "");
    EXPECT_EQ(terminatedWith, 2);
}

std::uintptr_t __cdecl RefuseThread(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned,
                                    unsigned*)
{
    return 0;
}

DWORD typeOfError = FILE_TYPE_DISK;

DWORD WINAPI TypeOfError(HANDLE)
{
    return typeOfError;
}

// A console may be what has stopped: without a thread of its own, a write could keep the process.
TEST_F(ForcedEndTest, Reason_is_on_standard_error_without_a_thread_too_unless_it_is_a_console)
{
    const ImportPatch type("GetFileType", TypeOfError);
    for (const DWORD kind : {FILE_TYPE_CHAR, FILE_TYPE_DISK}) {
        typeOfError = kind;
        ForcedEnd forcedEnd(100, NoteEndOfProcess);
        log::log_perf::v2::LibLogPerf logger;
        LogThrough(logger, forcedEnd);
        sink.BlockNextWrite();
        const ImportPatch patch("_beginthreadex", RefuseThread);
        forcedEnd.Now(logger, "the reason");
        EXPECT_EQ(error.Text(), kind == FILE_TYPE_CHAR ? "" : "the reason\r\n");
        EXPECT_EQ(terminatedWith, 2);
        sink.Release();
    }
}

} // namespace
} // namespace vqrx::test
