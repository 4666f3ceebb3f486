#pragma once

#include "ILogger.h"
#include "log_perf/sink/ILogSink.h"

#include <windows.h>

#include <array>
#include <atomic>

namespace vqrx::app::v0 {

/// The last resort of the shutdown: says why, and ends the process without the rest of the
/// shutdown. It is also a sink of the logger, so that it knows when the other sinks have written
/// the reason. It writes nothing in that role.
class ForcedEnd final : public log::log_perf::v2::ILogSink {
public:
    /// Ends the process. EndThisProcess does not return; the function of a test may.
    using Terminate = void (*)(UINT exitCode) noexcept;

    /// The exit code of a process that was ended in this way.
    static constexpr UINT kExitCode = 2;

    /// The exit code if the program had failed before: that of every failed program.
    static constexpr UINT kExitCodeOfFailure = 1;

    /// @param limitMs    milliseconds to wait for the log, and then once more for standard error
    /// @param terminate  called at the end of Now
    explicit ForcedEnd(DWORD limitMs = kLimitMs, Terminate terminate = EndThisProcess) noexcept;

    /// Remembers the line that the program prints about its failure after the shutdown. If Now ends
    /// the shutdown, it prints the line instead. Call it before the shutdown.
    /// @param line  the beginning of the line
    /// @param rest  the rest of the line; together they are cut to 511 characters
    void ProgramHasFailed(const char* line, const char* rest = "") noexcept;

    /// Ends the process:
    /// 1. Logs the reason at level error. The console sink writes it to standard error.
    /// 2. If the sinks do not write it within the limit, writes it to standard error itself, and
    ///    waits for that at most the limit too: a stopped console must not keep the process. If
    ///    there is no thread for that, it writes only what cannot stop: not to a console.
    /// 3. If the program had failed, writes the line of the failure to standard error, in the same
    ///    way.
    /// 4. Ends the process with kExitCode, or with kExitCodeOfFailure.
    /// Any thread.
    /// @param logger  the logger that this sink was added to
    /// @param reason  a literal: it must live until the process has ended
    void Now(log::i_logger::v0::ILogger& logger, const char* reason) noexcept;

    void Write(int level, const log::log_perf::v2::Timestamp* timestamp, const char* text) override;

    /// Ends this process at once, with TerminateProcess. ExitProcess would call the clean-up code
    /// of the libraries, COM among them, which may block.
    static void EndThisProcess(UINT exitCode) noexcept;

private:
    static constexpr DWORD kLimitMs = 2000;

    [[nodiscard]] bool WaitUntilWritten() const noexcept;

    DWORD limitMs_;
    Terminate terminate_;
    std::atomic<bool> written_ = false; // the sinks have written the reason
    std::array<char, 512> failure_{};   // the line of ProgramHasFailed; empty: the program works
};

} // namespace vqrx::app::v0
