#pragma once

#include "ProcessInfo.h"
#include "sync_ptr/SyncPtr.h"

#include <windows.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The daemons that the supervisor looks after, by daemon id.
/// Guarded by the table lock (DaemonManager::tableLock_). The clients' calls and the supervision
/// thread all take it; no other lock guards a ProcessInfo.
using DaemonTable = std::map<DWORD, ProcessInfo>;

/// A hold of the table lock, through which the table is reached. Destroying it leaves the lock.
using LockedTable = sync_ptr::v1::sync_ptr<std::shared_ptr<DaemonTable>>;

/// Finds the first daemon, in the order of the ids, with exactly this path and these arguments.
/// Upper and lower case differ. The caller holds the table lock.
/// @return valid while the caller holds the lock; null if there is no such daemon
[[nodiscard]] const ProcessInfo* FindSameCommand(const DaemonTable& table,
                                                 const std::string& executablePath,
                                                 const std::vector<std::string>& arguments);

/// Gives a new entry the next free id, as its key and as its daemonId. An id is free if no entry of
/// the table has it and it is not kNoId. After 2^32 requests the ids start again at 0, and daemons
/// with low ids may still run. The caller holds the table lock.
/// @param entry   not yet in the table
/// @param nextId  the next id to try; moves on past every id that is used up
/// @return the id
DWORD GiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                 std::atomic<DWORD>& nextId) noexcept;

/// Keeps the daemonId of a new entry if it is free, and otherwise gives the entry the next free id.
/// Parameters and lock are those of GiveFreeId.
void KeepOrGiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                      std::atomic<DWORD>& nextId) noexcept;

} // namespace vqrx::system::daemon::daemon_mgr::v0
