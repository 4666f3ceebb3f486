#pragma once

#include "Attribution.h"
#include "Timeline.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// Adds a start or an attach to the history of the daemon in this run. If the daemon's last process
/// has no end yet, its interval ends here as kLost. Ignores a record without a daemon id: that line
/// of the log is damaged.
/// @param latestMs  see ProcessInterval
void AddStart(SupervisorRun& run, const AttributedRecord& attributed, std::int64_t latestMs);

/// Adds a failed start to the history of the daemon in this run; to SupervisorRun::neverStarted if
/// the record has no daemon id.
void AddFailedStart(SupervisorRun& run, const AttributedRecord& attributed);

/// Ends the interval of the daemon's process: an end, a stop or a detach. If the log no longer
/// holds the start of that process, adds an interval from the beginning of the run. Ignores a
/// record without a daemon id: that line of the log is damaged.
/// @param end    the new end of the interval
/// @param state  the new state of the daemon
void AddEnd(SupervisorRun& run, const AttributedRecord& attributed, IntervalEnd end,
            DaemonState state);

} // namespace vqrx::client::v0
