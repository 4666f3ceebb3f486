#pragma once

#include "log_perf/DateText.h"
#include "log_perf/ILogSink.h"
#include "sync_ptr/CriticalSection.h"

namespace vqrx::log::log_perf::v2 {

/// Writes each record as one coloured line on the console: the colour is set on the standard output
/// handle, the text goes to standard error; on a console both are the same screen.
class ConsoleSink : public ILogSink {
public:
    /// Shows nothing above level 0 until a threshold is set.
    /// @throws ATL::CAtlException when the lock cannot be made
    ConsoleSink();
    ConsoleSink(const ConsoleSink&) = delete;
    ConsoleSink& operator=(const ConsoleSink&) = delete;

    /// Gives the console its grey back.
    ~ConsoleSink() override;

    /// Records of a higher level are not shown. Any thread.
    void SetThreshold(int level) noexcept;

    void Write(int level, const Timestamp* timestamp, const char* text) override;

private:
    system::sync_ptr::v1::CriticalSection lock_; // guards threshold_; not held while writing
    int threshold_ = 0;
    DateTextOfSecond dateText_; // worker thread only
};

} // namespace vqrx::log::log_perf::v2
