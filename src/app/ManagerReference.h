#pragma once

#include "DaemonManager.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// The program's counted reference to the one DaemonManager, which it makes.
/// When it lets go, the object must be gone before the logger is: clients are cut off, and a call
/// that is still under way (a stop may take a minute) is waited for.
class ManagerReference {
public:
    /// @throws as DaemonManager's constructor does
    ManagerReference(DWORD mainThreadId, DWORD checkInterval,
                     log::log_perf::v2::LibLogPerf* logger);
    ManagerReference(const ManagerReference&) = delete;
    ManagerReference& operator=(const ManagerReference&) = delete;
    ~ManagerReference();

    IUnknown* Object() const noexcept { return manager_; }

private:
    system::win32::v1::UniqueKernelHandle gone_;
    system::daemon::daemon_mgr::v0::DaemonManager* manager_;
};

} // namespace vqrx::app::v0
