#pragma once

#include "Reporter.h"

namespace vqrx::client::v0 {

/// Makes a reporter that prints: what was done on standard output; waits and failures on standard
/// error, after "daemonctl: ".
[[nodiscard]] Reporter ConsoleReporter();

} // namespace vqrx::client::v0
