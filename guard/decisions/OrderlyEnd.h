#pragma once

#include "Record.h"

#include <cstdint>
#include <vector>

namespace vqrx::guard::v0 {

/// A supervisor's process that has ended.
struct EndedSupervisor {
    std::int64_t createdMs = 0; ///< start of the process, milliseconds since 1970, UTC
    /// When the watch began, milliseconds since 1970, UTC. An order that is older is not about this
    /// watch: somebody ended the supervisor and then started the guard.
    std::int64_t watchedSinceMs = 0;
    std::uint32_t exitCode = 0; ///< of the process
    bool wasPublished = false;  ///< it was seen published, so its start was complete
};

/// Finds out whether somebody ordered the end of a supervisor: by "daemonctl exit", by Ctrl+C in
/// its console, or by a shutdown of Windows. The exit code alone does not show that: whoever
/// terminates a process chooses its exit code. Pure.
///
/// The end was ordered if the records of this process show
/// - a client's request to exit since the beginning of the watch; or
/// - "Deamon Thread is exiting...", and the process was published and ended with exit code 0 or
///   with 2, the code of a shutdown that was given up; or
/// - that a shutdown was given up, and the exit code is 2.
/// A start that fails also logs "Deamon Thread is exiting...". It is no ordered end. A supervisor
/// that was started beside this one, and was refused, logs it into the same file; nor is that one.
/// @param records  of the supervisor's log, read after the end
[[nodiscard]] bool WasOrdered(const EndedSupervisor& ended,
                              const std::vector<client::v0::Record>& records);

} // namespace vqrx::guard::v0
