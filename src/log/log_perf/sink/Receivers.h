#pragma once

#include "log_perf/sink/ILogSink.h"
#include "log_perf/sink/IPerformanceObserver.h"
#include "log_perf/sink/ISinkReports.h"
#include "sync_ptr/Guarded.h"

#include <cstdint>
#include <map>
#include <memory>

namespace vqrx::log::log_perf::v2 {

/// The sinks in the order of their addresses. The value is the same sink as an ISinkReports; null
/// if the sink is none.
using SinkSet = std::map<ILogSink*, ISinkReports*>;

/// Everything that receives the logger's output. None of it is owned.
struct Receivers {
    /// Never null. Replaced as a whole when a sink is added, so that the worker copies a pointer
    /// and allocates nothing.
    std::shared_ptr<const SinkSet> sinks = std::make_shared<const SinkSet>();

    ILogSink* performanceSink = nullptr;
    /// Counts the calls that set performanceSink. The report writes its row without the lock, and
    /// then sees whether another sink, which has no header yet, was set meanwhile.
    std::uint32_t performanceSinkChanges = 0;
    bool headerWritten = false; ///< performanceSink has its header row
    IPerformanceObserver* observer = nullptr;
};

/// The receivers inside the sink lock. The lock is held while the sinks are copied and while the
/// observer is called. It is not held while a sink writes.
using GuardedReceivers = system::sync_ptr::v1::Guarded<Receivers>;

} // namespace vqrx::log::log_perf::v2
