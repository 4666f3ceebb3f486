#pragma once

#include "ProcessInfo.h"
#include "sync_ptr/SyncPtr.h"

#include <windows.h>

#include <atomic>
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

/// Gives an entry that is to be inserted the next id that no daemon has. After 2^32 requests the
/// ids begin anew, while the daemons of old still run; kNoId is nobody's.
/// @return the id
DWORD GiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                 std::atomic<DWORD>& nextId) noexcept;

/// As above, but only if the id that the entry has cannot be used.
void KeepOrGiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                      std::atomic<DWORD>& nextId) noexcept;

} // namespace vqrx::system::daemon::daemon_mgr::v0
