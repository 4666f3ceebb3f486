#pragma once

#include "Reporter.h"

namespace vqrx::client::v0 {

/// Makes a reporter that prints. Completed work goes to standard output. Waits and failures go to
/// standard error, after "daemonctl: ".
[[nodiscard]] Reporter ConsoleReporter();

} // namespace vqrx::client::v0
