#pragma once

#include "DoctorChecks.h"

namespace vqrx::client::v0 {

/// Asks the machine everything that `daemonctl doctor` judges. Changes nothing. Waits up to 70
/// seconds if WMI, the firewall or the supervisor does not answer. Calls no COM object on the
/// calling thread.
/// @throws ProcessListUnreadable; CodePageError if a path cannot be converted to UTF-8;
///         std::system_error if Windows starts no thread
[[nodiscard]] DoctorFacts GatherDoctorFacts();

} // namespace vqrx::client::v0
