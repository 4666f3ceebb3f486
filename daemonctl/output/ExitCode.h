#pragma once

namespace vqrx::client::v0 {

/// The exit codes of daemonctl. Scripts rely on the numbers.
enum ExitCode : int {
    kDone = 0,
    /// Nothing failed and nothing was done (an unknown id, a daemon that exists already), or the
    /// answer is no, or there are only warnings.
    kNothingToDo = 1,
    kWrongUsage = 2,   ///< also for an argument that the client library refuses
    kNoSupervisor = 3, ///< no supervisor runs, or its proxy/stub is not registered
    /// The supervisor or Windows reported a failure, the supervisor did not answer or end in time,
    /// somebody else answers in its place, or output was lost.
    kRefused = 4,
    kLogUnreadable = 5, ///< the log cannot be read, or a part of it is damaged
};

} // namespace vqrx::client::v0
