#pragma once

#include "Record.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::guard::v0 {

/// A supervisor's process that has ended.
struct EndedSupervisor {
    std::int64_t createdMs = 0; ///< start of the process, milliseconds since 1970, UTC
    /// Whether the guard started the process.
    bool wasStarted = false;
    /// The last record of the log before the guard started the process, or before the watch began
    /// over a process that the guard found. Nothing: the log had no record. The clock may be set
    /// while the process runs, or may be years late after an empty battery. So the place of a
    /// record in the log shows what came first, and not its time.
    std::optional<client::v0::Record> lastBefore;
    std::uint32_t exitCode = 0; ///< of the process
    bool wasPublished = false;  ///< it was seen published, so its start was complete
};

/// Finds out whether somebody ordered the end of a supervisor: by "daemonctl exit", by Ctrl+C in
/// its console, by closing the console, or by a shutdown of Windows. The exit code alone does not
/// show that: whoever terminates a process chooses its exit code. Pure.
///
/// The end was ordered if the records of this process show
/// - a client's request to exit since the beginning of the watch; or
/// - "Deamon Thread is exiting...", and the process was published and ended with exit code 0 or
///   with 2, the code of a shutdown that was given up; or
/// - that a shutdown was given up, and the process was published and ended with exit code 2.
/// If the guard started the process, only the records after EndedSupervisor::lastBefore count. If
/// the guard found it, all its records count, but a request to exit only after that record: an
/// older request is not about this watch, because somebody ended the supervisor and then started
/// the guard. If the log no longer holds that record, all records came after it. Without records no
/// end counts as ordered.
///
/// A start that fails also logs "Deamon Thread is exiting...". It is no ordered end. A supervisor
/// that was started beside this one, and was refused, logs it into the same file. That is no
/// ordered end of this supervisor either.
/// @param records  of the supervisor's log, read after the end
[[nodiscard]] bool WasOrdered(const EndedSupervisor& ended,
                              const std::vector<client::v0::Record>& records);

} // namespace vqrx::guard::v0
