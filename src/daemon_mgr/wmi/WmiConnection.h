#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"

#include <wbemidl.h>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The manager's connection to Windows Management Instrumentation (WMI). It is made once; after a
/// failure the manager does not try again.
class WmiConnection {
public:
    /// Connects to root\cimv2 and logs each step. Waits at most two minutes for WMI. Sets the COM
    /// security of the process first. Call it once, on a thread of the multithreaded apartment,
    /// before another thread calls Services. A failure is logged, not thrown; interfaces obtained
    /// before the failure are kept.
    void Connect(log::i_logger::v0::ILogger& logger) noexcept;

    /// @return null before Connect, and if Connect failed before the namespace was open. If only
    ///         the call security failed, the pointer is valid and WMI may refuse calls. Usable on
    ///         every thread of the multithreaded apartment; owned by this object
    [[nodiscard]] IWbemServices* Services() const noexcept { return services_.Get(); }

private:
    void ConnectOrThrow(log::i_logger::v0::ILogger& logger);

    com::v1::ComPtr<IWbemLocator> locator_;
    com::v1::ComPtr<IWbemServices> services_;
};

} // namespace vqrx::system::daemon::daemon_mgr::v0
