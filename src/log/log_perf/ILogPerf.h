#pragma once

#include "ILogger.h"

namespace vqrx::log::log_perf::v2 {

/// A logger that also measures the process.
class ILogPerf : public i_logger::v0::ILogger {
public:
    /// Builds the performance report and hands it to the performance sink. Worker thread only.
    virtual void ReportPerformance() = 0;

    /// The counters of the report. Any thread.
    virtual void IncrementResync() = 0;
    virtual void IncrementTsDiscontinuity() = 0;
    virtual void IncrementDecodedPictures() = 0;
    virtual void AddPoliticChoices(int count) = 0;
};

} // namespace vqrx::log::log_perf::v2
