#pragma once

#include "LogFile.h"
#include "NewRecords.h"

#include <chrono>
#include <functional>
#include <string>

namespace vqrx::client::v0 {

/// How a log is followed.
struct FollowSettings {
    std::chrono::milliseconds period{200};    ///< between two looks at the file
    std::chrono::milliseconds patience{3000}; ///< a file that has vanished may come back
};

/// What is told of a log that is followed.
struct FollowEvents {
    std::function<void(const NewRecords&)> lost; ///< before the record that follows
    std::function<void(Record)> record;
    std::function<bool()> looked; ///< after each look at the file; false ends it
};

/// Shows what a log holds and then what is added to it, across wraps of the ring and across
/// restarts of the supervisor, until Looked says false or the file has vanished.
/// @return what the last look found
/// @throws std::runtime_error when the file cannot be opened, later on only after the patience
ScanSummary FollowLog(const std::string& path, TextEncoding encoding,
                      const FollowSettings& settings, const FollowEvents& events);

} // namespace vqrx::client::v0
