#pragma once

namespace vqrx::client::v0 {

/// The exit codes of daemonctl. Scripts rely on the numbers.
enum ExitCode : int {
    kDone = 0,
    kNothingToDo = 1,
    kWrongUsage = 2,
    kNoSupervisor = 3, ///< no supervisor runs, or its proxy/stub is not registered
    kRefused = 4,      ///< the supervisor or Windows reported a failure, or output was lost
    kLogUnreadable = 5,
};

} // namespace vqrx::client::v0
