#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A table with a line of titles and a line for each daemon.
/// @param timeText  writes a time for a reader
std::string ListingText(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                        const std::function<std::string(std::int64_t timeMs)>& timeText);

/// The same as one JSON object, whose field names stay as they are.
std::string ListingJson(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                        const std::string& version);

/// A process that ran when a listing was written as JSON.
struct ListedProcess {
    std::optional<std::uint32_t> id;
    std::uint32_t processId = 0;
    std::int64_t createdMs = 0;
    std::string image;
    std::string command; ///< without the blank behind it
    bool service = false;

    bool operator==(const ListedProcess&) const = default;
};

/// Reads a listing back. @throws std::runtime_error when it is none
std::vector<ListedProcess> ParseListing(const std::string& json);

} // namespace vqrx::client::v0
