#pragma once

#include "ILogger.h"

#include <exception>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Runs one piece of the supervision thread's work. If the work throws, the exception is logged at
/// level error and goes no further, so that the thread goes on supervising the other daemons.
template <typename Operation>
void LogExceptions(log::i_logger::v0::ILogger& logger, Operation operation) noexcept
{
    using log::i_logger::v0::kLevelError;
    try {
        operation();
    } catch (const std::exception& exception) {
        logger.Log(kLevelError, "Exception occured : %s", exception.what());
    } catch (...) {
        logger.Log(kLevelError, "Unknown exception occured");
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
