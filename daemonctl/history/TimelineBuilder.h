#pragma once

#include "Attribution.h"
#include "Record.h"
#include "Timeline.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// Builds a timeline from the records of a log.
///
/// The supervisor writes no message when a client stops an attached daemon, or a daemon without a
/// process. In the timeline such a daemon stays registered until the run ends.
///
/// Not for use by several threads at once.
class TimelineBuilder {
public:
    TimelineBuilder();

    /// Takes the next record of the log.
    void Add(Record record);

    /// Returns the timeline of the records that were added. The builder must not be used
    /// afterwards.
    [[nodiscard]] Timeline Finish();

private:
    void Take(const AttributedRecord& attributed);
    void NoteGaps(const AttributedRecord& attributed, bool newRun);
    void BeginRun(const AttributedRecord& attributed);
    void AddEvent(const AttributedRecord& attributed);
    [[nodiscard]] bool BeginsRun(const Event& event) const;
    [[nodiscard]] bool BelongsToEndedRun(const Event& event) const;
    SupervisorRun& CurrentRun() { return timeline_.runs.back(); }

    Attributor attributor_;
    Timeline timeline_;
    std::int64_t latestMs_ = 0;              // the latest time of a record so far
    bool supervising_ = false;               // the current run is past its start-up
    std::optional<std::int64_t> lastNumber_; // of the last record that has a number
    bool overflowed_ = false;                // the last record reports a queue overflow
};

/// Builds a timeline from all records of a log, in the order of writing.
[[nodiscard]] Timeline BuildTimeline(const std::vector<Record>& records);

} // namespace vqrx::client::v0
