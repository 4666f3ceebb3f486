#pragma once

#include "LogLevel.h"
#include "log_perf/sink/ILogSink.h"
#include "log_perf/time/DateText.h"
#include "sync_ptr/Guarded.h"

namespace vqrx::log::log_perf::v2 {

/// Writes each record as one coloured line on the console. It sets the colour on the standard
/// output handle and writes the text to standard error; on a console both are the same screen.
class ConsoleSink : public ILogSink {
public:
    /// Until a threshold is set, only errors are shown.
    /// @throws ATL::CAtlException if the lock cannot be made
    ConsoleSink();
    ConsoleSink(const ConsoleSink&) = delete;
    ConsoleSink& operator=(const ConsoleSink&) = delete;

    /// Sets the console's colour back to grey.
    ~ConsoleSink() override;

    /// Sets the least severe level that is shown; see LogLevel.h. Any thread.
    void SetThreshold(int level) noexcept;

    /// A line that cannot be written is lost; later lines are tried again. @throws std::bad_alloc
    void Write(int level, const Timestamp* timestamp, const char* text) override;

private:
    system::sync_ptr::v1::Guarded<int> threshold_{i_logger::v0::kLevelError};
    DateTextOfSecond dateText_; // worker thread only
};

} // namespace vqrx::log::log_perf::v2
