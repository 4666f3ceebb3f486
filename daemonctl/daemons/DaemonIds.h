#pragma once

#include "Timeline.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Writes the ids of the daemons that a supervisor looks after, for the completion of a shell: one
/// line for each daemon, with the id, a blank and the command. At most 1000 lines: nobody chooses
/// from more. Pure.
/// @param run     the run of the running supervisor
/// @param nowMs   the current time, milliseconds since 1970, UTC
/// @param prefix  only ids that begin with these characters
/// @return UTF-8, each line with a line feed at its end
[[nodiscard]] std::string DaemonIdLines(const SupervisorRun& run, std::int64_t nowMs,
                                        std::string_view prefix);

} // namespace vqrx::client::v0
