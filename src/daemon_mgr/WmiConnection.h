#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"

#include <wbemidl.h>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The connection to Windows Management Instrumentation. Made once; after a failure there is no
/// second try. What had been obtained before the failure is kept.
class WmiConnection {
public:
    /// Connects to root\cimv2. Makes the process's first CoInitializeSecurity call. Never throws: a
    /// failure is logged. On a thread of the multithreaded apartment.
    void Connect(log::i_logger::v0::ILogger& logger) noexcept;

    /// Null when not connected. For any thread of the multithreaded apartment.
    IWbemServices* Services() const noexcept { return services_.Get(); }

private:
    void ConnectOrThrow(log::i_logger::v0::ILogger& logger);

    com::v1::ComPtr<IWbemLocator> locator_;
    com::v1::ComPtr<IWbemServices> services_;
};

} // namespace vqrx::system::daemon::daemon_mgr::v0
