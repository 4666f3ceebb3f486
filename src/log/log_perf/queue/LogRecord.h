#pragma once

#include "LogLevel.h"
#include "log_perf/time/Timestamp.h"

#include <string>

namespace vqrx::log::log_perf::v2 {

/// One message on its way from the caller to the sinks.
struct LogRecord {
    int level = i_logger::v0::kLevelError;
    std::string text; ///< formatted and cleaned: one line
    Timestamp timestamp{};
};

} // namespace vqrx::log::log_perf::v2
