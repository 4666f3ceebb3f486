#pragma once

namespace vqrx::client::v0 {

/// The exit codes of daemonctl. Scripts rely on the numbers.
enum ExitCode : int {
    kDone = 0,
    kNothingToDo = 1, ///< not done and nothing failed, or the answer is no, or only warnings
    kWrongUsage = 2,
    kNoSupervisor = 3, ///< no supervisor runs, or its proxy/stub is not registered
    /// The supervisor or Windows reported a failure, the supervisor did not end in time, or output
    /// was lost.
    kRefused = 4,
    kLogUnreadable = 5,
};

} // namespace vqrx::client::v0
