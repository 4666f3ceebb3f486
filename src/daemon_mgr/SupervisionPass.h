#pragma once

#include "DaemonTable.h"
#include "ILogger.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Looks once at every daemon: one whose process has ended is reported, and one without a live
/// process is started. The caller holds the table lock. An exception ends the work on its daemon
/// alone, and is logged.
void SupervisionPass(DaemonTable& table, log::i_logger::v0::ILogger& logger);

} // namespace vqrx::system::daemon::daemon_mgr::v0
