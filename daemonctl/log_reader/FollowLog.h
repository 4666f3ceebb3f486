#pragma once

#include "LogFile.h"
#include "NewRecords.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Times for following a log file.
struct FollowSettings {
    std::chrono::milliseconds period{200};    ///< between two reads of the file
    std::chrono::milliseconds patience{3000}; ///< longest time in which no read succeeds
    /// Start after these records, which FindNew() gets; empty: start at the oldest record.
    std::vector<Record> shown = {};
};

/// The calls that FollowLog makes, all on the caller's thread.
struct FollowEvents {
    /// Called before the first record that follows missing records, and before the first record of
    /// a new log file.
    std::function<void(const NewRecords&)> gap;
    RecordCallback record;      ///< for each record, in the order of writing
    std::function<bool()> goOn; ///< after each read of the file; false ends the following
};

/// Reports the records of a log file, then each record that is added to it, until events.goOn
/// returns false. Continues across wraps of the ring and restarts of the supervisor.
/// @param path      UTF-8
/// @param encoding  of dates and texts in the file
/// @return the summary of the last read
/// @throws std::runtime_error  if the file cannot be read (ReadLogFile): at once at the beginning,
///         later if it could not be read for settings.patience
/// @throws std::bad_alloc, and whatever the events throw
[[nodiscard]] ScanSummary FollowLog(const std::string& path, TextEncoding encoding,
                                    const FollowSettings& settings, const FollowEvents& events);

} // namespace vqrx::client::v0
