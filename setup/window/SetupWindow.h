#pragma once

#include "Payload.h"
#include "SetupOptions.h"

#include <vector>

namespace vqrx::setup::v0 {

/// Shows the window of the installer or of the uninstaller, and does what the operator chooses
/// there. Returns after he has closed it.
/// @param files  the files to install; empty: this is the uninstaller
/// @return one of SetupExitCode
[[nodiscard]] int ShowSetupWindow(const SetupOptions& options,
                                  const std::vector<PayloadFile>& files);

} // namespace vqrx::setup::v0
