#pragma once

#include "DaemonManager.h"
#include "ForcedEnd.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// Makes the one DaemonManager and holds the program's reference to it.
///
/// The manager uses the logger, so it must be gone before the logger is destroyed. The destructor
/// therefore does this, on the main thread:
/// 1. It disconnects all clients. A client that never releases its reference cannot keep the
///    manager.
/// 2. It releases the program's own reference. If it was the last one, the manager is deleted now.
/// 3. Otherwise a client's call still runs (a stop takes up to 62 seconds). The destructor waits
///    until the call has ended, at most limitMs, and then deletes the manager. Until then the
///    supervision thread goes on: it restarts daemons and writes to the log.
/// 4. If something still holds a reference after limitMs, the destructor forces the end of the
///    process, without the rest of the shutdown, because that holder may use the logger at any
///    time.
/// The deletion of the manager waits for the pass under way, without a limit.
class ManagerReference {
public:
    /// Makes the manager; see DaemonManager's constructor for the first three parameters
    /// (checkInterval is in milliseconds). Waits for the firewall service, without a limit.
    /// @param forcedEnd  borrowed; called after the limit
    /// @param limitMs    milliseconds that the destructor waits for a call to end
    /// @throws ATL::CAtlException  an event or a lock cannot be made
    /// @throws COMException  COM cannot be initialised
    /// @throws std::runtime_error  the supervision thread cannot be made
    /// @throws std::bad_alloc
    ManagerReference(DWORD mainThreadId, DWORD checkInterval, log::log_perf::v2::LibLogPerf* logger,
                     ForcedEnd& forcedEnd, DWORD limitMs = kCallLimitMs);
    ManagerReference(const ManagerReference&) = delete;
    ManagerReference& operator=(const ManagerReference&) = delete;
    ~ManagerReference();

    /// The manager. Valid as long as this object; the caller adds its own reference.
    [[nodiscard]] IUnknown* Object() const noexcept { return manager_; }

private:
    // A stop waits at most 62 s for its process: 32 s for the rounds of the SNMP agent and 30 s for
    // WM_QUIT. The firewall and WMI, which calls also wait for, have no limit.
    static constexpr DWORD kCallLimitMs = 90000;

    log::log_perf::v2::LibLogPerf* logger_;
    ForcedEnd& forcedEnd_;
    DWORD limitMs_;
    system::win32::v1::UniqueKernelHandle released_; // set by the manager's last Release
    system::daemon::daemon_mgr::v0::DaemonManager* manager_;
};

} // namespace vqrx::app::v0
