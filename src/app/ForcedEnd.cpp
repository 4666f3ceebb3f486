#include "ForcedEnd.h"

#include "thread/Thread.h"

#include <cstring>
#include <limits>

namespace vqrx::app::v0 {
namespace {

using log::i_logger::v0::kLevelError;

// The level of the record after the reason. Every other sink drops it, because its threshold is lower.
constexpr int kLevelOfMark = std::numeric_limits<int>::max();

void WriteLine(const char* text) noexcept
{
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0;
    WriteFile(error, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
    WriteFile(error, "\r\n", 2, &written, nullptr);
}

// Writes a line to standard error on a thread of its own, because the console may have stopped.
// Calls Windows and not the C library: the logger's worker may hold the lock of that stream.
void WriteLineWithin(DWORD limitMs, const char* text) noexcept
{
    try {
        const system::thread::v1::Thread writer([text] { WriteLine(text); });
        WaitForSingleObject(writer.Handle(), limitMs);
    } catch (...) { // NOLINT(bugprone-empty-catch): no memory for a thread; the process ends anyway
    }
}

} // namespace

ForcedEnd::ForcedEnd(DWORD limitMs, Terminate terminate) noexcept
    : limitMs_(limitMs)
    , terminate_(terminate)
    , written_(CreateEventA(nullptr, TRUE, FALSE, nullptr))
{
}

void ForcedEnd::Now(log::i_logger::v0::ILogger& logger, const char* reason) noexcept
{
    logger.Log(kLevelError, "%s", reason);
    logger.Log(kLevelOfMark, "%s", "");
    // Without an event the wait fails at once, and the reason may appear twice.
    if (WaitForSingleObject(written_.Get(), limitMs_) != WAIT_OBJECT_0) {
        WriteLineWithin(limitMs_, reason);
    }
    terminate_(kExitCode);
}

void ForcedEnd::Write(int level, const log::log_perf::v2::Timestamp*, const char*)
{
    if (level == kLevelOfMark) {
        SetEvent(written_.Get());
    }
}

void ForcedEnd::EndThisProcess(UINT exitCode) noexcept
{
    TerminateProcess(GetCurrentProcess(), exitCode);
}

} // namespace vqrx::app::v0
