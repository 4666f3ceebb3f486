#include "ForcedEnd.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "TempFolder.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

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

/// Redirects the standard error of the process to a file.
class ErrorFile {
public:
    ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, file_.Get()); }
    ErrorFile(const ErrorFile&) = delete;
    ErrorFile& operator=(const ErrorFile&) = delete;
    ~ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, before_); }

    std::string Text() const
    {
        std::ifstream file(folder_.File("error"), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    TempFolder folder_;
    HANDLE before_ = GetStdHandle(STD_ERROR_HANDLE);
    UniqueKernelHandle file_{CreateFileA(folder_.File("error").c_str(), GENERIC_WRITE,
                                         FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)};
};

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

} // namespace
} // namespace vqrx::test
