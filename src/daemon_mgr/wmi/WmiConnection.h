#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"

#include <wbemidl.h>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The manager's connection to Windows Management Instrumentation (WMI). It is made once; after a
/// failure the manager does not try again.
class WmiConnection {
public:
    /// Connects to root\cimv2 and logs each step. Makes the first CoInitializeSecurity call of the
    /// process. Call it on a thread of the multithreaded apartment. A failure is logged, not thrown;
    /// interfaces obtained before the failure are kept.
    void Connect(log::i_logger::v0::ILogger& logger) noexcept;

    /// @return null if the namespace could not be opened. If only the call security failed, the
    ///         pointer is valid and WMI may refuse calls. Usable on every thread of the multithreaded
    ///         apartment; owned by this object
    [[nodiscard]] IWbemServices* Services() const noexcept { return services_.Get(); }

private:
    void ConnectOrThrow(log::i_logger::v0::ILogger& logger);

    com::v1::ComPtr<IWbemLocator> locator_;
    com::v1::ComPtr<IWbemServices> services_;
};

} // namespace vqrx::system::daemon::daemon_mgr::v0
