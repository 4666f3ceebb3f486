#pragma once

#include "DaemonStatus.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What a monitoring system learns about a machine besides its daemons.
struct MachineMetrics {
    std::string version;    ///< of daemonctl
    std::int64_t nowMs = 0; ///< milliseconds since 1970, UTC
    bool supervisorUp = false;
    std::optional<ProcessFacts> supervisor; ///< its process, if this user may examine it
    /// The log can be read and shows the run of the supervisor that is up. The other members on the
    /// log are valid.
    bool logReadable = false;
    bool logDamaged = false;          ///< parts cannot be read, or a damaged log was set aside
    std::uint64_t recordsMissing = 0; ///< gaps in the numbers of the records
    std::uint64_t queueOverflows = 0; ///< of the supervisor's logger, as far as the log shows
    std::optional<std::uint64_t> latePasses; ///< see CountLatePasses()
};

/// Writes the metrics of a machine. The text is OpenMetrics and also the text format of Prometheus:
/// all families are gauges. A counter must not fall, but every figure here can fall: with a new
/// process, or when the log loses its oldest records. docs/fleet.md describes the families, whose
/// names are fixed. At most 1000 daemons are written one by one, those in trouble first, then by
/// id; the families that count daemons count all. A label has at most 200 bytes. Pure.
/// @param daemons  empty if no supervisor is up
/// @return UTF-8; the last line, "# EOF", is ended
[[nodiscard]] std::string MetricsText(const MachineMetrics& machine,
                                      const std::vector<DaemonStatus>& daemons);

/// Counts the passes of the supervisor that came late. Only a daemon that cannot be started shows
/// the passes: the supervisor logs its failed start in each. Two failed starts of one daemon that
/// are more than 2 seconds and at most kTriedLatelyMs apart count as one late pass. Pure.
/// @return nothing if no two failed starts of one daemon are at most kTriedLatelyMs apart, so that
///         nobody has seen whether a pass came late
[[nodiscard]] std::optional<std::uint64_t> CountLatePasses(const SupervisorRun& run);

} // namespace vqrx::client::v0
