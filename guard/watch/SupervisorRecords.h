#pragma once

#include "Record.h"

#include <optional>
#include <vector>

namespace vqrx::guard::v0 {

/// Reads the records of the supervisor's log on this machine.
/// @return empty if the log cannot be read
[[nodiscard]] std::vector<client::v0::Record> RecordsOfSupervisor();

/// Returns the last record of the supervisor's log; nothing if there is none, or if the log cannot
/// be read.
[[nodiscard]] std::optional<client::v0::Record> LastRecordOfSupervisor();

} // namespace vqrx::guard::v0
