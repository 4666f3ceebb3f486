#include "ForcedEnd.h"

#include "thread/Thread.h"

#include <cstdio>
#include <cstring>
#include <limits>

namespace vqrx::app::v0 {
namespace {

using log::i_logger::v0::kLevelError;

constexpr DWORD kLookAgainMs = 10;

// The level of the record after the reason. Every other sink drops it, because its threshold is
// lower.
constexpr int kLevelOfMark = std::numeric_limits<int>::max();

void WriteLine(const char* text) noexcept
{
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0;
    WriteFile(error, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
    WriteFile(error, "\r\n", 2, &written, nullptr);
}

// Returns false if there is no memory for a thread.
bool WriteLineOnThread(DWORD limitMs, const char* text) noexcept
{
    try {
        const system::thread::v1::Thread writer([text] { WriteLine(text); });
        if (writer.Handle() != nullptr) {
            WaitForSingleObject(writer.Handle(), limitMs);
            return true;
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): as if Windows had made no thread
    }
    return false;
}

// Writes a line to standard error on a thread of its own, because the console may have stopped.
// Calls Windows and not the C library: the logger's worker may hold the lock of that stream.
// @param consoleWorks  the console has just taken a line
void WriteLineWithin(DWORD limitMs, const char* text, bool consoleWorks) noexcept
{
    if (!WriteLineOnThread(limitMs, text) &&
        (consoleWorks || GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_CHAR)) {
        WriteLine(text);
    }
}

} // namespace

ForcedEnd::ForcedEnd(DWORD limitMs, Terminate terminate) noexcept
    : limitMs_(limitMs)
    , terminate_(terminate)
{
}

void ForcedEnd::ProgramHasFailed(const char* line, const char* rest) noexcept
{
    std::snprintf(failure_.data(), failure_.size(), "%s%s", line, rest);
}

void ForcedEnd::Now(log::i_logger::v0::ILogger& logger, const char* reason) noexcept
{
    logger.Log(kLevelError, "%s", reason);
    logger.Log(kLevelOfMark, "%s", "");
    const bool written = WaitUntilWritten();
    if (!written) {
        WriteLineWithin(limitMs_, reason, false);
    }
    const bool failed = failure_.front() != '\0';
    if (failed) {
        WriteLineWithin(limitMs_, failure_.data(), written);
    }
    terminate_(failed ? kExitCodeOfFailure : kExitCode);
}

// Looks again and again instead of waiting for an event: an event may be missing, too.
bool ForcedEnd::WaitUntilWritten() const noexcept
{
    const ULONGLONG start = GetTickCount64();
    while (!written_ && GetTickCount64() - start < limitMs_) {
        Sleep(kLookAgainMs);
    }
    return written_;
}

void ForcedEnd::Write(int level, const log::log_perf::v2::Timestamp*, const char*)
{
    if (level == kLevelOfMark) {
        written_ = true;
    }
}

void ForcedEnd::EndThisProcess(UINT exitCode) noexcept
{
    TerminateProcess(GetCurrentProcess(), exitCode);
}

} // namespace vqrx::app::v0
