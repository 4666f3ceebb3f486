#include "StopProcess.h"

#include "InternalResult.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

using end_process::v1::EndProcess;
using end_process::v1::StopMethod;
using host::v0::kFailure;
using host::v0::kSuccess;
using log::i_logger::v0::kLevelWarning;

int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& daemon, const StopTimings& timings)
{
    if (!daemon.process) {
        return kSuccess;
    }
    if (daemon.attached) {
        return kFailure;
    }
    // The text is made first: after the process has ended, nothing may throw.
    const std::string description = DaemonDescription(daemon);
    StopMethod method{};
    const bool hasEnded = EndProcess(
        {daemon.executablePath, daemon.processId, daemon.process.Get()}, timings, method);
    if (hasEnded) {
        logger.Log(kLevelWarning, "Stop (%d) %s", static_cast<int>(method), description.c_str());
    } else {
        logger.Log(kLevelWarning, "Unable to stop %s", description.c_str());
    }
    daemon.process.Reset();
    return hasEnded ? kSuccess : kFailure;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
