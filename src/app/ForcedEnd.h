#pragma once

#include "ILogger.h"
#include "log_perf/sink/ILogSink.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// The last resort of the shutdown: says why, and ends the process without the rest of the shutdown.
/// It is also a sink of the logger, so that it knows when the other sinks have written the reason.
/// It writes nothing in that role.
class ForcedEnd final : public log::log_perf::v2::ILogSink {
public:
    /// Ends the process. EndThisProcess does not return; the function of a test may.
    using Terminate = void (*)(UINT exitCode) noexcept;

    /// The exit code of a process that was ended in this way.
    static constexpr UINT kExitCode = 2;

    /// @param limitMs    milliseconds to wait for the log, and then once more for standard error
    /// @param terminate  called at the end of Now
    explicit ForcedEnd(DWORD limitMs = kLimitMs, Terminate terminate = EndThisProcess) noexcept;

    /// Logs the reason at level error. The console sink writes it to standard error. If the sinks do
    /// not write it within the limit, this function writes it to standard error itself, and waits for
    /// that at most the limit too: a stopped console must not keep the process. Then it ends the
    /// process with kExitCode.
    /// Any thread.
    /// @param logger  the logger that this sink was added to
    /// @param reason  a literal: it must live until the process has ended
    void Now(log::i_logger::v0::ILogger& logger, const char* reason) noexcept;

    void Write(int level, const log::log_perf::v2::Timestamp* timestamp, const char* text) override;

    /// Ends this process at once, with TerminateProcess. ExitProcess would call the clean-up code of
    /// the libraries, COM among them, which may block.
    static void EndThisProcess(UINT exitCode) noexcept;

private:
    static constexpr DWORD kLimitMs = 2000;

    DWORD limitMs_;
    Terminate terminate_;
    system::win32::v1::UniqueKernelHandle written_; // set when the sinks have written the reason
};

} // namespace vqrx::app::v0
