#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// How far a supervisor's local time is ahead of UTC, in minutes, from the two times of a record.
/// @param date  "Mon Nov 16 03:52:36.123"
std::optional<int> ZoneOffset(std::string_view date, std::int64_t timeMs);

/// "UTC", "UTC+01:00"
std::string ZoneText(int offsetMinutes);

/// "2025-11-16 03:52:36" in that zone.
std::string LocalText(std::int64_t timeMs, int offsetMinutes);

/// "850 ms", "12 s", "17 min 24 s", "3 h 5 min", "12 d 3 h"
std::string DurationText(std::int64_t durationMs);

/// A mark of a time axis.
struct Tick {
    std::int64_t timeMs = 0;
    std::string label;

    bool operator==(const Tick&) const = default;
};

/// At most seven round times between two, in that zone.
std::vector<Tick> AxisTicks(std::int64_t beginMs, std::int64_t endMs, int offsetMinutes);

} // namespace vqrx::client::v0
