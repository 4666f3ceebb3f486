#pragma once

#include "ILogger.h"

namespace vqrx::log::log_perf::v2 {

/// A logger that also measures the process.
class ILogPerf : public i_logger::v0::ILogger {
public:
    /// Makes the performance report: one row to the performance sink, the key figures to the
    /// observer. Worker thread only. @throws std::bad_alloc
    virtual void ReportPerformance() = 0;

    // Counters of the report. Any thread.
    virtual void IncrementResync() = 0;            ///< adds 1 to "NumResync"
    virtual void IncrementTsDiscontinuity() = 0;   ///< adds 1 to "NumTsDiscontinuity"
    virtual void IncrementDecodedPictures() = 0;   ///< adds 1 to "NumDecPictures"
    virtual void AddPoliticChoices(int count) = 0; ///< adds count to "NumPoliticChoices"
};

} // namespace vqrx::log::log_perf::v2
