#pragma once

#include "ILogger.h"

#include <exception>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Does a piece of the supervision thread's work. What it throws is logged and goes no further: a
/// supervisor that stopped supervising would lose its daemons.
template <typename Operation>
void LogExceptions(log::i_logger::v0::ILogger& logger, Operation operation) noexcept
{
    try {
        operation();
    } catch (const std::exception& exception) {
        logger.Log(0, "Exception occured : %s", exception.what());
    } catch (...) {
        logger.Log(0, "Unknown exception occured");
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
