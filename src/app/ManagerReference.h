#pragma once

#include "DaemonManager.h"
#include "ProcessEnd.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// The program's counted reference to the one DaemonManager, which it makes.
/// When it lets go, the object must be gone before the logger is: clients are cut off, and a call
/// that is still under way (a stop may take a minute) is waited for. Where something holds on for
/// good, and may use the logger at any moment, the process ends without an orderly end.
class ManagerReference {
public:
    /// @param limitMs  how long a call may take to let go at the end, milliseconds
    /// @param end      called when the limit has passed
    /// @throws as DaemonManager's constructor does
    ManagerReference(DWORD mainThreadId, DWORD checkInterval, log::log_perf::v2::LibLogPerf* logger,
                     DWORD limitMs = kLongestCallMs, ProcessEnd end = EndThisProcess);
    ManagerReference(const ManagerReference&) = delete;
    ManagerReference& operator=(const ManagerReference&) = delete;
    ~ManagerReference();

    IUnknown* Object() const noexcept { return manager_; }

private:
    // Longer than any call takes: a stop of the SNMP agent has 32 s of rounds and 30 s of patience.
    static constexpr DWORD kLongestCallMs = 90000;

    DWORD limitMs_;
    ProcessEnd end_;
    system::win32::v1::UniqueKernelHandle released_;
    system::daemon::daemon_mgr::v0::DaemonManager* manager_;
};

} // namespace vqrx::app::v0
