#pragma once

#include "log_perf/time/Timestamp.h"

namespace vqrx::log::log_perf::v2 {

/// Receives the records of the log and writes them somewhere. A sink filters by level itself.
/// The logger does not own its sinks: a sink must outlive the logger that it was added to.
class ILogSink {
public:
    ILogSink() = default;
    ILogSink(const ILogSink&) = delete;
    ILogSink& operator=(const ILogSink&) = delete;
    virtual ~ILogSink() = default;

    /// Writes one record. Called by the logger's worker thread only, one record at a time. If it
    /// throws, the other sinks still get the record. If the exception is a SinkNotice, they also
    /// get its line. See ISinkReports for trouble that is no exception.
    /// @param level      severity, see LogLevel.h
    /// @param timestamp  valid only during the call
    /// @param text       one line, NUL-terminated, valid only during the call
    virtual void Write(int level, const Timestamp* timestamp, const char* text) = 0;
};

} // namespace vqrx::log::log_perf::v2
