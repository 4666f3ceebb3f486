#pragma once

#include "log_perf/Timestamp.h"

namespace vqrx::log::log_perf::v2 {

/// Where records go. Filters by level itself. Called by the logger's worker thread only, one record
/// at a time; must outlive the logger it was added to.
class ILogSink {
public:
    ILogSink() = default;
    ILogSink(const ILogSink&) = delete;
    ILogSink& operator=(const ILogSink&) = delete;
    virtual ~ILogSink() = default;

    /// @param timestamp  borrowed for the call
    /// @param text       NUL-terminated, one line, borrowed for the call
    virtual void Write(int level, const Timestamp* timestamp, const char* text) = 0;
};

} // namespace vqrx::log::log_perf::v2
