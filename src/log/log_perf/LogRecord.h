#pragma once

#include "log_perf/Timestamp.h"

#include <string>

namespace vqrx::log::log_perf::v2 {

/// One message on its way from the caller to the sinks.
struct LogRecord {
    int level = 0;
    std::string text; ///< formatted and cleaned: one line
    Timestamp timestamp{};
};

} // namespace vqrx::log::log_perf::v2
