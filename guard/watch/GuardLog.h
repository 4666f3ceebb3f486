#pragma once

#include "LogLevel.h"
#include "log_perf/LibLogPerf.h"
#include "log_perf/ring/LogFileSink.h"

#include <string>

namespace vqrx::guard::v0 {

/// The guard's own log: a ring file like the supervisor's. Any thread.
class GuardLog {
public:
    /// @param file  path in the ANSI code page
    /// @throws ATL::CAtlException if a lock cannot be made; std::bad_alloc
    explicit GuardLog(const std::string& file);
    GuardLog(const GuardLog&) = delete;
    GuardLog& operator=(const GuardLog&) = delete;
    ~GuardLog() = default;

    /// Writes one record. A line feed in the text becomes a blank. Does not wait for the disk.
    /// @param level  see LogLevel.h
    /// @param text   UTF-8
    /// @throws std::bad_alloc
    void Log(int level, const std::string& text);

private:
    log::log_perf::v2::LogFileSink sink_;
    // Last: its destructor delivers the queued records to the sink.
    log::log_perf::v2::LibLogPerf logger_;
};

} // namespace vqrx::guard::v0
