#pragma once

#include "ProcessInfo.h"
#include "sync_ptr/SyncPtr.h"

#include <windows.h>

#include <map>
#include <memory>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The daemons, by daemon id.
using DaemonTable = std::map<DWORD, ProcessInfo>;

/// The table, locked for as long as this is held.
using LockedTable = sync_ptr::v1::sync_ptr<std::shared_ptr<DaemonTable>>;

/// The first record, in id order, with this very path and these very arguments; null when none.
const ProcessInfo* FindSameCommand(const DaemonTable& table, const std::string& executablePath,
                                   const std::vector<std::string>& arguments);

} // namespace vqrx::system::daemon::daemon_mgr::v0
