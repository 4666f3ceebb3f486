#pragma once

#include "DoctorFacts.h"

namespace vqrx::client::v0 {

/// Looks at the registry keys, the folders \App and \Logs and the log file, by opening them as the
/// supervisor does and closing them again.
InstallationFacts GatherInstallationFacts();

/// Looks at the registry's settings for crashes.
CrashDialogFacts GatherCrashDialogFacts();

} // namespace vqrx::client::v0
