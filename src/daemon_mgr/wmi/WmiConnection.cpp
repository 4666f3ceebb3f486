#include "wmi/WmiConnection.h"

#include "LogLevel.h"
#include "exception_utils/HResultText.h"
#include "wmi/ConnectWmi.h"

#include <exception>

namespace vqrx::system::daemon::daemon_mgr::v0 {

using log::i_logger::v0::ILogger;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;

void WmiConnection::Connect(ILogger& logger) noexcept
{
    try {
        ConnectOrThrow(logger);
    } catch (const std::exception& exception) {
        logger.Log(kLevelError, "Init WMI errror %s", exception.what());
    } catch (...) {
        logger.Log(kLevelError, "Init WMI errror %s", "out of memory");
    }
}

void WmiConnection::ConnectOrThrow(ILogger& logger)
{
    const HRESULT security = wmi::v1::SetComSecurity();
    if (FAILED(security)) {
        logger.Log(kLevelError, "CoInitializeSecurity error %s",
                   cpp_utils::exception_utils::v1::HResultText(security).c_str());
        return;
    }
    locator_ = wmi::v1::MakeLocator();
    logger.Log(kLevelInformation, "Connecting to WMI resource ...");
    services_ = wmi::v1::OpenNamespace(locator_.Get());
    logger.Log(kLevelInformation, "Connected to WMI resource");
    wmi::v1::SetCallSecurity(services_.Get());
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
